#include "qelRegExWrapper.h"
#include "qelString.h"

#include <stdio.h>

int main()
{
    const qelString name = L"HEA 200";
    printf("%s has %d characters.\n", name.getStringA(), name.length());

    if (qelString::compareWithNumbers(L"P9", L"P10") < 0)
    {
        puts("P9 comes before P10.");
    }

    qelRegExWrapper expression;
    expression.setRegularExpression(L"(HE[ABM]|IPE) *(\\d+)");
    qelArray<qelString> groups; // the whole match, then the groups
    if (expression.match(name, groups))
    {
        printf("The profile is %d mm high.\n", groups[2].toInteger());
    }
}
