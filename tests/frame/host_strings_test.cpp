// Formatting with Windows' reading of wide printf conversions, and bounds.
#include "host/CString.h"
#include "support/temp_env.h"

TEST(CStringFormat, WideConversionsReadAsOnWindows) {
    CString text;
    text.Format(L"%s\\%s", L"C:\\dir", L"name.icc");
    EXPECT_EQ(text, L"C:\\dir\\name.icc");
    text.Format(L"[%S|%c|%C|%hs]", "narrow", L'w', 'n', "half");
    EXPECT_EQ(text, L"[narrow|w|n|half]");
    text.Format(L"%5.2f %I64d %ls %%", 2.2, static_cast<long long>(1) << 40, L"long-s");
    EXPECT_EQ(text, L" 2.20 1099511627776 long-s %");
    std::wstring big(5000, L'x');
    text.Format(L"<%s>", big.c_str());
    EXPECT_EQ(text.GetLength(), 5002);
}

TEST(CStringOps, BoundsAreClampedNotOverrun) {
    CString text(L"\\dir\\profile.icm");
    EXPECT_EQ(text.ReverseFind(L'\\'), 4);
    EXPECT_EQ(text.Mid(5), L"profile.icm");
    EXPECT_EQ(text.Mid(50), L"");
    EXPECT_EQ(text.Left(-3), L"");
    EXPECT_EQ(text.Right(100), text);
    EXPECT_EQ(text.Find(L"icm", 20), -1);
    EXPECT_EQ(CString(L"ABC").CompareNoCase(L"abc"), 0);
    EXPECT_LT(CString(L"ABC").Compare(L"abc"), 0);
    wchar_t* buffer = text.GetBuffer(40);
    wcscpy(buffer, L"short");
    text.ReleaseBuffer();
    EXPECT_EQ(text.GetLength(), 5);
}
