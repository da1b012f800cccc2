// A small host: something of every kind that crosses the border of the DLL, and what each gives.
#include "qelBalancedTree.h"
#include "qelDataSourcesUtilities.h"
#include "qelDouble.h"
#include "qelMathUtilities.h"
#include "qelRegExWrapper.h"
#include "qelRuntime.h"
#include "qelStringClassArray.h"
#include "qelThreadsPool.h"
#include "qelVersion.h"

#include <stdio.h>

namespace
{
// A class of the host's own, which the library calls back.
class Profile : public qelBalancedTreeEntry
{
public:
    explicit Profile(int height)
        : m_height(height)
    {
    }

    int compare(const qelBalancedTreeEntry& other) const override
    {
        const int theirs = static_cast<const Profile&>(other).m_height;
        return theirs < m_height ? -1 : theirs > m_height ? 1 : 0;
    }

private:
    int m_height;
};

void check(void* checked)
{
    *static_cast<bool*>(checked) = true;
}

// Text, a list of texts, and an array that the library fills and the host's own code frees.
void showTexts()
{
    qelStringClassArray names;
    names.append(L"IPE 300");
    names.append(L"HEA 200");
    names.sort(qelString::strCompareNoCase);
    qelRegExWrapper profile;
    profile.setRegularExpression(L"(HE[ABM]|IPE) *(\\d+)");
    qelArray<qelString> parts;
    if (profile.match(names.first(), parts))
    {
        printf("%s is a %s of %s\n", parts[0].getStringA(), parts[1].getStringA(), parts[2].getStringA());
    }
}

void showTree()
{
    qelBalancedTree profiles;
    for (int height = 100; height <= 300; height += 100)
    {
        profiles.insert(new Profile(height));
    }
    printf("200 is %s, 250 is %s\n", profiles.search(Profile(200)) ? "there" : "missing",
           profiles.search(Profile(250)) ? "there" : "missing");
}

// A function, and a constant that lies in the DLL.
void showNumbers()
{
    printf("2.346 is about %g, pi is about %.5f\n", qelDouble::round(2.346, 2, 0.0), qelMathUtilities::PI);
}

void showTasks()
{
    bool checked = false;
    qelThreadsPool pool(1);
    pool.QueueTask(check, &checked);
    pool.WaitForThreadsToFinishWork();
    printf("the task has %s\n", checked ? "run" : "not run");
}

void showConnection()
{
    qelDataSourcesUtilities sources;
    qelString connection;
    const int found = sources.getConnectionString(L"NoSuchCatalogue", connection, L"x64");
    // Through the library, to the host's own stream.
    qelfprintf(stdout, "%s\n", found == 1 ? connection.getStringA() : "there is no such catalogue");
}
} // namespace

int main()
{
    puts("VarnelQELRoots " QEL_VERSION_TEXT);
    showTexts();
    showTree();
    showNumbers();
    showTasks();
    showConnection();
    return 0;
}
