// The flash dialog in each of its modes and the flash buttons, driven
// without a display against the in-process board.

#include "forms/FFlash.h"

#include "config/ControllerTypes.h"
#include "tests/flash/FlashFixture.h"

namespace vortelm::testing {
namespace {

class FlashForm : public FlashProgramTest {
  protected:
    void connect(const FamilyCase& f) {
        start(f);
        run("_connect NOPROMPT");
        dialog = std::make_unique<forms::FFlash>(st(), *program->session().target);
    }
    std::unique_ptr<forms::FFlash> dialog;
};

TEST_F(FlashForm, EachModeHasItsCaptionAndControls) {
    connect(kFamilyCases[0]);
    struct Want {
        const char* mode;
        const char* caption;
        bool sections;
        bool password;
    };
    for (const Want& w :
         {Want{"ERASE", "Erase Sector", true, false}, Want{"PROTECT", "Protect Flash", false, true},
          Want{"UNPROTECT", "Unprotect Flash", false, true},
          Want{"LOCK", "Lock Flash - Enable Write Protection", true, true},
          Want{"UNLOCK", "Unlock - Disable Write Protection", true, true},
          Want{"STATUS", "Read Status", true, false}}) {
        SCOPED_TRACE(w.mode);
        dialog->setfeature(w.mode);
        EXPECT_EQ(dialog->mode(), w.mode);
        EXPECT_EQ(dialog->caption(), w.caption);
        EXPECT_EQ(dialog->sectionsVisible(), w.sections);
        EXPECT_EQ(dialog->passwordVisible(), w.password);
    }
}

TEST_F(FlashForm, DevicesAreTheUnitsWithTheFeature) {
    connect(kFamilyCases[0]);
    dialog->setfeature("ERASE");
    EXPECT_EQ(dialog->memUnits(), (std::vector<std::string>{"IFLASH", "XFLASH"}));
    dialog->setfeature("PROTECT");
    EXPECT_EQ(dialog->memUnits(), (std::vector<std::string>{"IFLASH"}));
}

TEST_F(FlashForm, SectionListShowsTheRangesOfEachSection) {
    connect(kFamilyCases[0]);
    dialog->setfeature("ERASE");
    ASSERT_EQ(dialog->sections().size(), 4u);
    EXPECT_EQ(dialog->sections()[0], "Section 0: 010000 - 017FFF,018000 - 01FFFF");
    EXPECT_EQ(dialog->sections()[1], "Section 1: 020000 - 02FFFF");
    dialog->DMemUnit_Click(1);
    ASSERT_EQ(dialog->sections().size(), 8u);
    EXPECT_EQ(dialog->sections()[7], "Section 7: 470000 - 47FFFF");
}

TEST_F(FlashForm, OkErasesEverySelectedSection) {
    connect(kFamilyCases[1]);
    writeFile("a.hex", IntelHex(0xC00000, Pattern(0xC000, 1)));
    run("_load a.hex");
    run("_iprogram");
    const size_t from = host.terminal.size();
    dialog->setfeature("ERASE");
    dialog->setSectionSelected(0, true);
    dialog->setSectionSelected(2, true);
    dialog->BOk_Click();
    EXPECT_TRUE(dialog->closed());
    const std::string out = host.terminal.substr(from);
    EXPECT_TRUE(has(out, "*Erase: Sector 0 in IFLASH successfully erased")) << out;
    EXPECT_FALSE(has(out, "Sector 1 in")) << out;
    EXPECT_TRUE(has(out, "*Erase: Sector 2 in IFLASH successfully erased")) << out;
    EXPECT_LT(out.find("Sector 0"), out.find("Sector 2"));
}

TEST_F(FlashForm, LockAndUnlockTakeThePasswordAndGoOnAfterAFailure) {
    connect(kFamilyCases[1]);
    dialog->setfeature("LOCK");
    dialog->password = "pw";
    dialog->setSectionSelected(1, true);
    dialog->setSectionSelected(3, true);
    size_t from = host.terminal.size();
    dialog->BOk_Click();
    std::string out = host.terminal.substr(from);
    // one line for each selected section
    size_t lines = 0;
    for (size_t p = out.find("*Lock: IFLASH successfully locked"); p != std::string::npos;
         p = out.find("*Lock: IFLASH successfully locked", p + 1))
        ++lines;
    EXPECT_EQ(lines, 2u) << out;

    dialog->setfeature("UNLOCK");
    dialog->password = "nope";
    dialog->setSectionSelected(1, true);
    dialog->setSectionSelected(3, true);
    from = host.terminal.size();
    dialog->BOk_Click();
    out = host.terminal.substr(from);
    // both fail, each with its own line
    EXPECT_NE(out.find("*ERROR: Unlock not successful"), out.rfind("*ERROR: Unlock not successful"))
        << out;

    dialog->setfeature("UNLOCK");
    dialog->password = "pw";
    dialog->setSectionSelected(3, true);
    from = host.terminal.size();
    dialog->BOk_Click();
    EXPECT_TRUE(
        has(host.terminal.substr(from), "*Unlock: Sector 3 in IFLASH successfully unlocked"));
}

TEST_F(FlashForm, ProtectAndUnprotectRunOnce) {
    connect(kFamilyCases[2]);
    dialog->setfeature("PROTECT");
    dialog->password = "secret";
    size_t from = host.terminal.size();
    dialog->BOk_Click();
    EXPECT_TRUE(has(host.terminal.substr(from), "*Protect: IFLASH successfully protected"));
    dialog->setfeature("UNPROTECT");
    dialog->password = "secret";
    from = host.terminal.size();
    dialog->BOk_Click();
    EXPECT_TRUE(has(host.terminal.substr(from),
                    "*Unprotect: Read protection of IFLASH successfully removed"));
}

TEST_F(FlashForm, StatusListsTheWordsAndSplitsThePickedOne) {
    connect(kFamilyCases[1]);
    run("_lock IFLASH,pw,2");
    dialog->setfeature("STATUS");
    ASSERT_EQ(dialog->sections().size(), 2u);
    EXPECT_EQ(dialog->sections()[0], "Statusword 0: FSR=0008");
    EXPECT_EQ(dialog->sections()[1], "Statusword 1: FLOCK=0004");
    dialog->ISections_Click(0);
    EXPECT_EQ(dialog->bitFields(), (std::vector<std::string>{"BUSY=0", "ERROR=0", "PROTECTED=0",
                                                             "LOCKED=1", "SEQERR=0"}));
    dialog->ISections_Click(1);
    ASSERT_GE(dialog->bitFields().size(), 3u);
    EXPECT_EQ(dialog->bitFields()[2], "SECTOR2=1");
}

TEST_F(FlashForm, ButtonsShowByTheUnitsFeaturesWhileConnected) {
    start(kFamilyCases[1]);
    for (const auto& b : forms::kFlashButtons)
        EXPECT_FALSE(forms::FlashButtonVisible(st(), b.feature)) << b.name;
    run("_connect NOPROMPT");
    for (const auto& b : forms::kFlashButtons)
        EXPECT_TRUE(forms::FlashButtonVisible(st(), b.feature)) << b.name;
    // a unit that loses a feature hides its button
    const int u = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[u].featureCount = 1;  // PROGRAM only
    EXPECT_TRUE(forms::FlashButtonVisible(st(), "PROGRAM"));
    EXPECT_FALSE(forms::FlashButtonVisible(st(), "UNPROTECT"));
}

TEST_F(FlashForm, ButtonsTestTheConnectionFirst) {
    start(kFamilyCases[0]);
    const size_t from = host.terminal.size();
    EXPECT_FALSE(forms::FlashButtonConnected(st()));
    EXPECT_EQ(forms::BProgram_Click(*program->session().target), -100);
    const std::string out = host.terminal.substr(from);
    EXPECT_EQ(out, "\r\n*ERROR: Not connected to Monitor\r\n*ERROR: Not connected to Monitor");
}

TEST_F(FlashForm, ProgramButtonRunsTheIntelligentProgram) {
    connect(kFamilyCases[0]);
    writeFile("a.hex", IntelHex(0x30000, Pattern(0x100, 1)));
    run("_load a.hex");
    const size_t from = host.terminal.size();
    EXPECT_EQ(forms::BProgram_Click(*program->session().target), 0);
    EXPECT_TRUE(has(host.terminal.substr(from), "*IProgram:256 bytes successfully programmed"));
}

}  // namespace
}  // namespace vortelm::testing
