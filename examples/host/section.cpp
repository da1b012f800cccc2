// "host section": the section values and codes of the profiles in a part list.
#include "Commands.h"
#include "Console.h"
#include "PartList.h"

#include "qelDouble.h"

#include <algorithm>
#include <set>

namespace
{
qelProfTypeDSTVValues sectionOf(const Part& part)
{
    qelProfTypeDSTVValues values;
    values.setDSTVType(part.type);
    values.setH1(part.height);
    values.setB1(part.width);
    values.setTS(part.webThickness);
    values.setTG(part.flangeThickness);
    values.setR1(part.radius);
    return values;
}

/// The straight part of the web between the fillets, to 5 mm; 0 for sections that have no two flanges.
double straightWeb(const qelProfTypeDSTVValues& section)
{
    if (section.getDSTVType() != eDSTV_I && section.getDSTVType() != eDSTV_U)
    {
        return 0.0;
    }
    return qelDouble::round(section.getH1() - 2.0 * (section.getTG() + section.getR1()), 0, 5.0);
}

/// One part of each profile, in the order of the list.
std::vector<const Part*> profilesOf(const std::vector<Part>& parts)
{
    std::set<qelString> seen;
    std::vector<const Part*> profiles;
    for (const Part& part : parts)
    {
        if (seen.insert(part.profile).second)
        {
            profiles.push_back(&part);
        }
    }
    return profiles;
}

/// Those of `profiles` that are named, in the order of the names. False where one is missing; the user has been told.
bool selectNamed(const std::vector<std::wstring>& names, std::vector<const Part*>& profiles)
{
    bool isComplete = true;
    std::vector<const Part*> selected;
    for (const std::wstring& name : names)
    {
        const qelString wanted(name.c_str());
        const auto found = std::find_if(profiles.begin(), profiles.end(), [&wanted](const Part* part) {
            return qelString::compareNoCase(part->profile, wanted) == 0;
        });
        if (found == profiles.end())
        {
            printError(L"host section: there is no profile \"" + name + L"\"\n");
            isComplete = false;
        }
        else
        {
            selected.push_back(*found);
        }
    }
    profiles = selected;
    return isComplete;
}

void printSections(const std::vector<const Part*>& profiles, size_t limit)
{
    const size_t rows = std::min(limit, profiles.size());
    Table table({L"PROFILE", L"CODE", L"H1", L"B1", L"TS", L"TG", L"R1", L"STRAIGHT WEB"});
    for (size_t i = 0; i < rows; ++i)
    {
        const qelProfTypeDSTVValues section = sectionOf(*profiles[i]);
        table.add({profiles[i]->profile.getStringW(), section.getProftypeString().getStringW(),
                   millimetres(section.getH1()), millimetres(section.getB1()), millimetres(section.getTS()),
                   millimetres(section.getTG()), millimetres(section.getR1()), millimetres(straightWeb(section))});
    }
    table.print();
    print(std::to_wstring(rows) + L" of " + std::to_wstring(profiles.size()) + L" profiles\n");
}

int run(const Arguments& arguments)
{
    PartListOptions options;
    if (!parsePartListOptions(L"section", arguments, options))
    {
        return kUsageError;
    }
    std::vector<Part> parts;
    if (!readParts(options.file, parts))
    {
        return 1;
    }
    std::vector<const Part*> profiles = profilesOf(parts);
    if (!options.names.empty() && !selectNamed(options.names, profiles))
    {
        return 1;
    }
    printSections(profiles, options.limit);
    return 0;
}
} // namespace

const Command sectionCommand = {
    L"section",
    L"section values and codes of profiles",
    L"usage: host section [--file FILE] [--limit N] [NAME ...]\n"
    L"\n"
    L"Prints the profile code and the dimensions, in mm, of the profiles in a part list, under the names of the DSTV\n"
    L"standard: height H1, width B1, thickness of web TS and flange TG, radius R1. STRAIGHT WEB is the part of the\n"
    L"web between the fillets, rounded to 5 mm.\n"
    L"\n"
    L"  --file FILE  part list; without it, parts.csv in the current folder\n"
    L"  --limit N    print the first N profiles only\n"
    L"  NAME         profile, such as \"HEA 200\", in upper or lower case; without any, all profiles of the list\n"
    L"  --help       show this text\n",
    run,
};
