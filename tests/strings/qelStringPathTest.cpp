#include "strings/TextSupport.h"

#include <gtest/gtest.h>

using namespace qelTest;

namespace
{
struct Parts
{
    qelString drive = L"old";
    qelString dir = L"old";
    qelString fname = L"old";
    qelString ext = L"old";
};

Parts split(const std::wstring& path)
{
    Parts parts;
    qelString(path.c_str()).SplitPath(parts.drive, parts.dir, parts.fname, parts.ext);
    return parts;
}

std::wstring made(const std::wstring& drive, const std::wstring& dir, const std::wstring& fname, const std::wstring& ext)
{
    qelString path(L"old");
    path.MakePath(drive.c_str(), dir.c_str(), fname.c_str(), ext.c_str());
    return plain(path);
}

TEST(qelStringSplitPath, GivesDriveFolderNameAndExtension)
{
    const Parts parts = split(L"c:\\Kernel\\Data\\model.v2.mdb");
    EXPECT_EQ(plain(parts.drive), L"c:");
    EXPECT_EQ(plain(parts.dir), L"\\Kernel\\Data\\");
    EXPECT_EQ(plain(parts.fname), L"model.v2");
    EXPECT_EQ(plain(parts.ext), L".mdb");
}

TEST(qelStringSplitPath, LeavesMissingPartsEmpty)
{
    Parts parts = split(L"model");
    EXPECT_EQ(plain(parts.drive + parts.dir + parts.ext), L"");
    EXPECT_EQ(plain(parts.fname), L"model");
    parts = split(L"a/b/");
    EXPECT_EQ(plain(parts.dir), L"a/b/");
    EXPECT_EQ(plain(parts.drive + parts.fname + parts.ext), L"");
    parts = split(L"");
    EXPECT_TRUE(isShared(parts.drive, qelString()));
    EXPECT_TRUE(isShared(parts.dir, qelString()));
    EXPECT_TRUE(isShared(parts.fname, qelString()));
    EXPECT_TRUE(isShared(parts.ext, qelString()));
}

TEST(qelStringSplitPath, MayWriteToTheStringItself)
{
    qelString path(L"c:\\a\\b.c");
    qelString drive;
    qelString fname;
    qelString ext;
    path.SplitPath(drive, path, fname, ext);
    EXPECT_EQ(plain(path), L"\\a\\");
    EXPECT_EQ(plain(drive), L"c:");
    EXPECT_EQ(plain(fname), L"b");
    EXPECT_EQ(plain(ext), L".c");
}

TEST(qelStringSplitPath, TakesPartsOfUpTo259UnitsAndGivesFourEmptyOnesBeyond)
{
    const LenientRuntime lenient;
    Parts parts = split(L"c:\\" + std::wstring(259, L'n') + L".x");
    EXPECT_EQ(parts.fname.length(), 259);
    EXPECT_EQ(plain(parts.ext), L".x");
    parts = split(std::wstring(258, L'd') + L"\\n");
    EXPECT_EQ(parts.dir.length(), 259);

    for (const std::wstring& path : {L"c:\\" + std::wstring(260, L'n') + L".x", std::wstring(259, L'd') + L"\\n",
                                     L"c:n." + std::wstring(259, L'e'), std::wstring(kLongestText, L'n')})
    {
        parts = split(path);
        EXPECT_EQ(plain(parts.drive + parts.dir + parts.fname + parts.ext), L"");
    }
}

TEST(qelStringMakePath, PutsThePartsTogether)
{
    EXPECT_EQ(made(L"c:", L"\\Kernel\\Data\\", L"model", L".mdb"), L"c:\\Kernel\\Data\\model.mdb");
}

TEST(qelStringMakePath, AddsWhatSeparatesTheParts)
{
    EXPECT_EQ(made(L"c", L"Kernel", L"model", L"mdb"), L"c:Kernel\\model.mdb");
    EXPECT_EQ(made(L"c", L"a/", L"b", L""), L"c:a/b");
}

TEST(qelStringMakePath, LeavesOutEmptyParts)
{
    EXPECT_EQ(made(L"", L"", L"model", L""), L"model");
    EXPECT_EQ(made(L"", L"", L"", L""), L"");
    EXPECT_EQ(made(L"", L"", L"", L"e"), L".e");
}

TEST(qelStringMakePath, TakesThisStringAsAPart)
{
    qelString path(L"model");
    path.MakePath(L"c", L"d", path, L"mdb");
    EXPECT_EQ(plain(path), L"c:d\\model.mdb");
}

TEST(qelStringMakePath, TakesUpTo259UnitsAndGivesTheEmptyTextBeyond)
{
    const LenientRuntime lenient;
    EXPECT_EQ(made(L"c", L"", std::wstring(257, L'n'), L""), L"c:" + std::wstring(257, L'n'));
    EXPECT_EQ(made(L"c", L"", std::wstring(258, L'n'), L""), L"");
    EXPECT_EQ(made(L"c", L"", std::wstring(250, L'n'), L".extended"), L"");
    EXPECT_EQ(made(L"", std::wstring(300, L'd'), L"n", L""), L"");
}

TEST(qelStringMakePath, UndoesASplit)
{
    const wchar_t* path = L"z:\\a b\\c.d\\e.f";
    const Parts parts = split(path);
    EXPECT_EQ(made(parts.drive.getStringW(), parts.dir.getStringW(), parts.fname.getStringW(), parts.ext.getStringW()),
              path);
}
} // namespace
