// The file forms, the user scripts dialog and the command picker driven
// through the window on the offscreen platform, against the virtual board.

#include <QDropEvent>
#include <QListWidget>
#include <QMimeData>
#include <QRadioButton>
#include <QTimer>
#include <QToolButton>
#include <QUrl>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "core/Helpers.h"
#include "tests/ui/UiFixture.h"
#include "ui/FileDialogs.h"
#include "ui/ScriptDialogs.h"

namespace vortelm::testing {
namespace {

namespace fs = std::filesystem;

std::string Read(const std::string& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream o;
    o << in.rdbuf();
    return o.str();
}

// Runs `work` on the dialog of type D once it is shown modally.
template <class D>
void OnModal(std::function<void(D&)> work) {
    QTimer::singleShot(0, [work]() {
        auto* d = qobject_cast<D*>(QApplication::activeModalWidget());
        ASSERT_NE(d, nullptr);
        work(*d);
        // a dialog whose OK did not close it is closed here
        if (d->isVisible()) d->reject();
    });
}

template <class T = QWidget>
T* In(QWidget& d, const char* name) {
    T* w = d.findChild<T*>(QString::fromUtf8(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
}

void Click(QWidget& d, const char* name) {
    In<QAbstractButton>(d, name)->click();
}

// The place list to the data home, then into a folder of it.
void GoTo(QWidget& d, const std::string& dataHome, const char* folder) {
    auto* places = In<QComboBox>(d, "XDrivelist");
    for (int i = 0; i < places->count(); ++i)
        if (places->itemText(i).contains(QString::fromStdString(dataHome)) &&
            places->itemText(i).startsWith("data home"))
            Q_EMIT places->activated(i);
    if (!folder) return;
    auto* dirs = In<QListWidget>(d, "XDirlist");
    const auto items = dirs->findItems(QString::fromUtf8(folder), Qt::MatchExactly);
    ASSERT_EQ(items.size(), 1) << folder;
    Q_EMIT dirs->itemActivated(items[0]);
}

void PickFile(QWidget& d, const char* name) {
    auto* files = In<QListWidget>(d, "XFilelist");
    const auto items = files->findItems(QString::fromUtf8(name), Qt::MatchExactly);
    ASSERT_EQ(items.size(), 1) << name;
    files->setCurrentItem(items[0]);
}

class FileForms : public UiTest {
  protected:
    std::string dataHome() { return st().programFolder; }
    void loadSample() {
        OnModal<ui::FFileLoad>([this](ui::FFileLoad& d) {
            EXPECT_EQ(d.windowTitle(), "Load File");
            GoTo(d, dataHome(), "SCRIPTS");
            PickFile(d, "SAMPLE.HEX");
            EXPECT_EQ(In<QLineEdit>(d, "TFilename")->text(), "SAMPLE.HEX");
            Click(d, "BOk");
        });
        find<QToolButton>("BLoad")->click();
    }
};

// A newcomer: the load button, the connect and download buttons, the binary
// save of the File menu; no command typed.
TEST_F(FileForms, ANewcomerLoadsTheSampleDownloadsItAndSavesItAsBinary) {
    ASSERT_TRUE(fs::exists(dataHome() + "/SCRIPTS/SAMPLE.HEX"));
    // connecting sends the kernel through the image, so it comes first
    find<QToolButton>("BConnect")->click();
    ASSERT_EQ(st().ConnectionState, 1) << st().terminalBuffer;
    loadSample();
    ASSERT_TRUE(logged("*Load: ")) << st().terminalBuffer;
    ASSERT_GT(st().selections.count, 0);
    find<QToolButton>("BDownload")->click();
    EXPECT_TRUE(logged("*Download: ")) << st().terminalBuffer;
    std::string saved;
    OnModal<ui::FBinFileSave>([&](ui::FBinFileSave& d) {
        In<QLineEdit>(d, "TFilename")->setText("sample");
        Click(d, "BOk");
        saved = d.form().TargetPath();
    });
    find<QAction>("UFileSaveBinary")->trigger();
    EXPECT_TRUE(logged("*Save Binary: selection written to binary file"));
    ASSERT_FALSE(saved.empty());
    EXPECT_EQ(fs::path(saved).filename(), "sample.bin");
    // the same bytes as the binary save row with the form's fill byte
    Enter(find<QComboBox>("TCommand"), "_binsave row.bin,FF");
    const std::string bytes = Read(saved);
    EXPECT_FALSE(bytes.empty()) << st().terminalBuffer;
    EXPECT_EQ(bytes, Read(NativePath(ResolveSavePath(st(), "row.bin")))) << st().terminalBuffer;
    // the image on the board is the image loaded
    Enter(find<QComboBox>("TCommand"), "_compare");
    EXPECT_TRUE(logged("0 Bytes different")) << st().terminalBuffer;
}

TEST_F(FileForms, SaveAsSRecordWritesWhatTheSaveRowWrites) {
    loadSample();
    std::string saved;
    OnModal<ui::FSaveAs>([&](ui::FSaveAs& d) {
        EXPECT_EQ(d.windowTitle(), "Save File as");
        auto* types = In<QComboBox>(d, "DFiletype");
        EXPECT_EQ(types->itemText(1), "SRE files (*.sre)");
        Q_EMIT types->activated(1);
        EXPECT_TRUE(In<QRadioButton>(d, "O19")->isVisibleTo(&d));
        EXPECT_FALSE(In<QRadioButton>(d, "O20")->isVisibleTo(&d));
        In<QRadioButton>(d, "O28")->click();
        In<QLineEdit>(d, "TRecordsize")->setText("16");
        In<QLineEdit>(d, "TFilename")->setText(QString::fromStdString(home + "/form"));
        Click(d, "BOk");
        saved = d.form().TargetPath();
    });
    find<QToolButton>("BSaveAs")->click();
    EXPECT_EQ(saved, home + "/form.sre");
    EXPECT_TRUE(logged("*SaveAs: selection written to file"));
    Enter(find<QComboBox>("TCommand"), "_savesre row.sre,16,28");
    EXPECT_FALSE(Read(saved).empty());
    EXPECT_EQ(Read(saved), Read(NativePath(ResolveSavePath(st(), "row.sre"))));
}

TEST_F(FileForms, AUserScriptButtonRunsItsScriptAgainstTheBoard) {
    const std::string script = home + "/connect.scm";
    std::ofstream(script) << "_connect NOPROMPT\r\n";
    OnModal<ui::FAssignScript>([&](ui::FAssignScript& d) {
        In<QLineEdit>(d, "TFilename0")->setText(QString::fromStdString(script));
        In<QLineEdit>(d, "TName0")->setText("Connect!");
        Click(d, "BOk");
    });
    find<QAction>("UScriptSelectUserScript")->trigger();
    EXPECT_EQ(st().userScripts[0].path, script);
    auto* button = find<QToolButton>("BFunc0");
    EXPECT_EQ(button->text(), "Connect!");
    EXPECT_TRUE(QTest::qWaitFor([&]() { return button->isVisible(); }, 2000));
    ASSERT_EQ(st().ConnectionState, 0);
    button->click();
    EXPECT_EQ(st().ConnectionState, 1) << st().terminalBuffer;
    // and it heads the last scripts
    EXPECT_EQ(find<QAction>("UScriptLastfile0")->text(), QString::fromStdString(script));
}

TEST_F(FileForms, ARowsSearchPicksAScriptThroughTheLoadForm) {
    OnModal<ui::FAssignScript>([&](ui::FAssignScript& d) {
        OnModal<ui::FFileLoad>([this](ui::FFileLoad& load) {
            EXPECT_EQ(load.windowTitle(), "Load script");
            GoTo(load, dataHome(), "SCRIPTS");
            PickFile(load, "SAMPLE.SCM");
            Click(load, "BOk");
        });
        Click(d, "BSearch3");
        EXPECT_EQ(In<QLineEdit>(d, "TName3")->text(), "SAMPLE.SCM");
        Click(d, "BEdit3");
        Click(d, "BOk");
    });
    find<QAction>("UScriptSelectUserScript")->trigger();
    EXPECT_EQ(st().userScripts[3].name, "SAMPLE.SCM");
    EXPECT_EQ(fs::path(st().userScripts[3].path), fs::path(dataHome()) / "SCRIPTS" / "SAMPLE.SCM");
    // the editor was asked for, with the file as its last argument
    ASSERT_FALSE(host->started.empty());
    EXPECT_EQ(host->started.back().back(), st().userScripts[3].path);
    EXPECT_FALSE(logged("_connect NOPROMPT"));  // picked, not run
}

TEST_F(FileForms, ThePickerPutsTheLineIntoTheCommandBox) {
    OnModal<ui::FCommandSelection>([](ui::FCommandSelection& d) {
        auto* list = In<QListWidget>(d, "LCommands");
        const auto items = list->findItems("_help", Qt::MatchExactly);
        ASSERT_EQ(items.size(), 1);
        list->setCurrentItem(items[0]);
        EXPECT_EQ(In<QLabel>(d, "LDescription")->text(), "List all shell commands");
        EXPECT_EQ(In<QLabel>(d, "LUsage")->text(), "_help");
        Click(d, "BOk");
    });
    find<QToolButton>("BSelectCommand")->click();
    EXPECT_EQ(find<QComboBox>("TCommand")->lineEdit()->text(), "_help");
    EXPECT_FALSE(logged("List all shell commands"));  // nothing ran
}

TEST_F(FileForms, AHeadingTakenGoesAsItStandsAndEnterSendsItToTheTerminal) {
    OnModal<ui::FCommandSelection>([](ui::FCommandSelection& d) {
        auto* list = In<QListWidget>(d, "LCommands");
        const auto items = list->findItems("FILE FUNCTIONS", Qt::MatchExactly);
        ASSERT_EQ(items.size(), 1);
        list->setCurrentItem(items[0]);
        EXPECT_EQ(In<QLabel>(d, "LDescription")->text(), "");
        Q_EMIT list->itemDoubleClicked(items[0]);
    });
    find<QToolButton>("BSelectCommand")->click();
    auto* box = find<QComboBox>("TCommand");
    EXPECT_EQ(box->lineEdit()->text(), "FILE FUNCTIONS");
    QTest::keyClick(box->lineEdit(), Qt::Key_Return);
    EXPECT_TRUE(logged("-> SENDING: FILE FUNCTIONS")) << st().terminalBuffer;
}

TEST_F(FileForms, SelectRangeAddsTheBlockAndGoesToItsPage) {
    OnModal<ui::FSelectRange>([](ui::FSelectRange& d) {
        auto* start = In<QLineEdit>(d, "TStartaddress");
        start->clear();
        QTest::keyClicks(start, "1234567");
        EXPECT_EQ(start->text(), "000000");  // the seventh character
        start->clear();
        QTest::keyClicks(start, "000100");
        In<QListWidget>(d, "IBlocks")->setCurrentRow(1);
        EXPECT_EQ(In<QLineEdit>(d, "TEndAddress")->text(), "0001FF");
        Click(d, "BOk");
    });
    find<QAction>("UEditSelectRange")->trigger();
    EXPECT_EQ(lastBox(), "No 6-digit hexadecimal number!");
    ASSERT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 0x100);
    EXPECT_EQ(st().selections.end[0], 0x1FF);
}

TEST_F(FileForms, RegisterSetAndPreferencesGoThroughTheFileMenu) {
    const std::string set = home + "/mine.mrs";
    OnModal<ui::FFileSave>([&](ui::FFileSave& d) {
        EXPECT_EQ(d.windowTitle(), "Save SFR Register Set");
        Click(d, "BOk");  // no name
        In<QLineEdit>(d, "TFilename")->setText(QString::fromStdString(home + "/mine"));
        Click(d, "BOk");
    });
    find<QAction>("UFileSaveSFRRegisterSet")->trigger();
    EXPECT_EQ(host->answeredBoxes.front(), "Please insert a filename !");
    EXPECT_TRUE(fs::exists(set));
    OnModal<ui::FFileLoad>([&](ui::FFileLoad& d) {
        EXPECT_EQ(d.windowTitle(), "Load SFR Register Set");
        In<QLineEdit>(d, "TFilename")->setText(QString::fromStdString(set));
        Click(d, "BOk");
    });
    find<QAction>("UFileLoadSFRRegisterSet")->trigger();
    EXPECT_EQ(st().LoadFileMemos[4].name, "mine.mrs");

    st().TIMEOUT = 1234;
    OnModal<ui::FFileSave>([&](ui::FFileSave& d) {
        EXPECT_EQ(d.windowTitle(), "Save Preferences");
        In<QLineEdit>(d, "TFilename")->setText(QString::fromStdString(home + "/p"));
        Click(d, "BOk");
    });
    find<QAction>("UFileSavePreferences")->trigger();
    ASSERT_TRUE(fs::exists(home + "/p.ini"));
    st().TIMEOUT = 99;
    OnModal<ui::FFileLoad>([&](ui::FFileLoad& d) {
        EXPECT_EQ(d.windowTitle(), "Load preferences");
        In<QLineEdit>(d, "TFilename")->setText(QString::fromStdString(home + "/p.ini"));
        Click(d, "BOk");
    });
    find<QAction>("UFileLoadPreferences")->trigger();
    EXPECT_EQ(st().TIMEOUT, 1234);
}

TEST_F(FileForms, BinaryLoadTakesTheOffset) {
    std::ofstream(home + "/three.bin", std::ios::binary) << std::string("\x11\x22\x33", 3);
    OnModal<ui::FBinFileLoad>([&](ui::FBinFileLoad& d) {
        EXPECT_EQ(In<QLineEdit>(d, "TOffset")->text(), "000000");
        In<QLineEdit>(d, "TFilename")->setText(QString::fromStdString(home + "/three.bin"));
        In<QLineEdit>(d, "TOffset")->setText("2000");
        Click(d, "BOk");
    });
    find<QAction>("UFileLoadBinary")->trigger();
    EXPECT_TRUE(logged("*Load Binary: 3 bytes loaded")) << st().terminalBuffer;
    EXPECT_EQ(ReadDumpByte(st().dump, 0x2001), 0x22);
    EXPECT_EQ(find<QAction>("UFileRecent0")->text(), QString::fromStdString(home + "/three.bin"));
}

TEST_F(FileForms, AFileDroppedOnTheWindowLoadsAndJoinsTheRecentFiles) {
    const std::string sample = dataHome() + "/SCRIPTS/SAMPLE.HEX";
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(sample))});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &drop);
    EXPECT_TRUE(logged("*Load: ")) << st().terminalBuffer;
    EXPECT_GT(st().selections.count, 0);
    QAction* recent = find<QAction>("UFileRecent0");
    EXPECT_TRUE(recent->isVisible());
    EXPECT_EQ(recent->text(), QString::fromStdString(sample));
    EXPECT_FALSE(find<QAction>("UFileRecent1")->isVisible());
    // kept in the data home for the next run
    EXPECT_EQ(Read(dataHome() + "/recent-files.txt"), sample + "\n");
    // the recent entry loads it again
    st().selections.count = 0;
    recent->trigger();
    EXPECT_GT(st().selections.count, 0);
}

}  // namespace
}  // namespace vortelm::testing
