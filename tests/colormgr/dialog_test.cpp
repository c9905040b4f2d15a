// The colour-matching dialog: what the record carries in, and how the user's
// choices come back. A substitute stands in for the dialog.
#include <tesk/loader.h>
#include <tesk/path.h>

#include <cwchar>

#include "support/manager_harness.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

struct DialogScript {
    DWORD clearFlags = 0;
    std::wstring monitor, printer, target;
    // What the dialog was shown.
    COLORMATCHSETUPW seen{};
    std::wstring seenMonitor, seenPrinter, seenTarget, seenSource, seenDisplay;
    int calls = 0;
};

DialogScript& Script() {
    static DialogScript script;
    return script;
}

BOOL WINAPI FakeDialog(PCOLORMATCHSETUPW setup) {
    DialogScript& script = Script();
    ++script.calls;
    script.seen = *setup;
    script.seenMonitor = setup->pMonitorProfile;
    script.seenPrinter = setup->pPrinterProfile;
    script.seenTarget = setup->pTargetProfile;
    script.seenSource = setup->pSourceName ? setup->pSourceName : L"<null>";
    script.seenDisplay = setup->pDisplayName ? setup->pDisplayName : L"<null>";
    setup->dwFlags &= ~script.clearFlags;
    setup->dwRenderIntent = 2;
    setup->dwProofingIntent = 1;
    wcsncpy(setup->pMonitorProfile, script.monitor.c_str(), setup->ccMonitorProfile);
    wcsncpy(setup->pPrinterProfile, script.printer.c_str(), setup->ccPrinterProfile);
    wcsncpy(setup->pTargetProfile, script.target.c_str(), setup->ccTargetProfile);
    return TRUE;
}

class DialogTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        Script() = DialogScript();
        tesk::loader::Substitute icmui;
        icmui.overrides["SetupColorMatchingW"] = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&FakeDialog));
        tesk::loader::SetSubstitute(L"ICMUI.DLL", icmui);
    }
    HWND Window() { return reinterpret_cast<HWND>(0x10); }
};

}  // namespace

TEST_F(DialogTest, TheRecordCarriesTheSettingsAndTheChoicesComeBack) {
    WriteRgbProfile(ColorDir() + "/Chosen.icc", 2.2);
    CColorManager& manager = *CColorManager::Instance();
    wchar_t monitorName[] = L"Old.icc", printerName[] = L"Press.icc", proofName[] = L"Proof.icc";
    manager.UpdateSettings(true, true, monitorName, printerName, proofName, 0, 3);

    Script().clearFlags = CMS_DISABLEICM | CMS_ENABLEPROOFING;
    Script().monitor = L"Chosen.icc";
    Script().printer = L"NewPrinter.icc";
    bool enable = false, proofing = false;
    vell::TSharedArray<wchar_t> monitor;
    auto printer = vell::TSharedArray<wchar_t>::FromText(L"Caller printer.icc");
    auto target = vell::TSharedArray<wchar_t>::FromText(L"Caller target.icc");
    uint32_t intent = 1, proofIntent = 3;
    EXPECT_TRUE(manager.ColorMatchUI(Window(), enable, proofing, monitor, printer, target, intent, proofIntent));

    const COLORMATCHSETUPW& seen = Script().seen;
    EXPECT_EQ(seen.dwSize, 136u);
    EXPECT_EQ(seen.dwVersion, 0x200u);
    // ICM disabled as asked, proofing forced on by the manager's setting.
    EXPECT_EQ(seen.dwFlags, 0x27Cu | CMS_DISABLEICM | CMS_ENABLEPROOFING);
    EXPECT_EQ(seen.dwRenderIntent, 1u);
    EXPECT_EQ(seen.ccMonitorProfile, 260u);
    EXPECT_EQ(Script().seenMonitor, L"Old.icc");
    EXPECT_EQ(Script().seenPrinter, L"Caller printer.icc");
    EXPECT_EQ(Script().seenTarget, L"Caller target.icc");
    EXPECT_EQ(Script().seenSource, Access::WorkingSpace(manager));
    EXPECT_EQ(Script().seenDisplay, Access::MonitorID(manager));

    EXPECT_TRUE(enable) << "the user enabled ICM";
    EXPECT_FALSE(proofing);
    EXPECT_EQ(intent, 2u);
    EXPECT_EQ(proofIntent, 1u);
    EXPECT_EQ(std::wstring(monitor.Get()), L"Chosen.icc");
    EXPECT_EQ(std::wstring(printer.Get()), L"NewPrinter.icc");
    EXPECT_EQ(std::wstring(target.Get()), L"Caller target.icc") << "an empty buffer keeps the argument";
    // The new monitor profile is the display's profile at once.
    HDC dc = GdiCreateDC(L"DISPLAY", nullptr);
    EXPECT_EQ(GdiICMProfile(dc), tesk::path::ToWindows(ColorDir()) + L"\\Chosen.icc");
    GdiDeleteDC(dc);
}
