// Kills at random points. A child process saves over and over (an image
// with _save's writer, the preference file with the shut-down writer, the
// first start's copy of the data tree) and is killed after a random time;
// what it leaves must be the old file or the new one, whole, never a mix or
// an empty file, and a first start cut short is repaired by the next.
// The random times only place the kill; nothing here measures speed.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>

#include "config/DataHome.h"
#include "config/Preferences.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/Selections.h"

namespace vortelm {
namespace {

namespace fs = std::filesystem;

constexpr int kKills = 100;

std::string ReadAll(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

struct TempDir {
    TempDir() {
        std::string t = (fs::temp_directory_path() / "vortelm-kill-XXXXXX").string();
        if (!::mkdtemp(t.data())) std::abort();
        path = t;
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    fs::path path;
};

// Runs work in a child until it is killed after delayUs; true when the
// child was still at work then (the kill hit it), false when it had ended.
bool KillDuring(const std::function<void()>& work, int delayUs) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    ::usleep(static_cast<useconds_t>(delayUs));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

// Two images in dump memory, saved alternately by the HEX writer of _save.
struct Images {
    ProgramState st;
    std::string path;
    explicit Images(const fs::path& dir) : path((dir / "image.hex").string()) {
        st.programFolder = dir.string();
        st.PATH_SAVE = dir.string();
        InitDumpMemory(st.dump);
    }
    void fill(int salt) {
        for (int32_t a = 0; a < 0x8000; ++a) {
            WriteDumpByte(st.dump, a, static_cast<uint8_t>(a * 13 + salt));
            SetDefined(st.dump, a, kTrue);
        }
        st.selections.count = 0;
        AddSelection(st.selections, 0, 0x7FFF);
    }
    std::string save(int salt) {
        fill(salt);
        WriteHexSelections(st, path, 32, 4);
        return ReadAll(path);
    }
};

TEST(Kill, ImageSaveLeavesTheOldOrTheNewFile) {
    TempDir dir;
    Images img(dir.path);
    const std::string a = img.save(1);
    const std::string b = img.save(2);
    ASSERT_NE(a, b);
    ASSERT_FALSE(a.empty());
    std::mt19937 rng(13);
    int hit = 0, olds = 0, news = 0;
    for (int i = 0; i < kKills; ++i) {
        (void)img.save(1);  // the old file
        const bool killed = KillDuring(
            [&] {
                for (int k = 0;; ++k) (void)img.save(k % 2 == 0 ? 2 : 1);
            },
            std::uniform_int_distribution<int>(0, 40000)(rng));
        hit += killed;
        const std::string left = ReadAll(img.path);
        const bool whole = left == a || left == b;
        EXPECT_TRUE(whole) << "kill " << i << " left " << left.size() << " bytes";
        olds += left == a;
        news += left == b;
    }
    std::printf("[kill] image save: %d kills, %d in the middle of work; old file %d, new file %d\n",
                kKills, hit, olds, news);
    EXPECT_EQ(hit, kKills);
}

TEST(Kill, PreferenceSaveLeavesTheOldOrTheNewFile) {
    TempDir dir;
    ProgramState st;
    st.programFolder = dir.path.string();
    auto text = [&](int32_t timeout) {
        st.TIMEOUT = timeout;
        return PreferencesText(st);
    };
    const std::string a = text(1111);
    const std::string b = text(2222);
    const fs::path ini = dir.path / "default.ini";
    std::mt19937 rng(17);
    int hit = 0;
    for (int i = 0; i < kKills; ++i) {
        st.TIMEOUT = 1111;
        ASSERT_TRUE(WritePreferences(st, "default.ini"));
        hit += KillDuring(
            [&] {
                for (int k = 0;; ++k) {
                    st.TIMEOUT = k % 2 == 0 ? 2222 : 1111;
                    (void)WritePreferences(st, "default.ini");
                }
            },
            std::uniform_int_distribution<int>(0, 20000)(rng));
        const std::string left = ReadAll(ini);
        EXPECT_TRUE(left == a || left == b) << "kill " << i << " left " << left.size() << " bytes";
    }
    std::printf("[kill] preference save: %d kills, %d in the middle of work\n", kKills, hit);
    EXPECT_EQ(hit, kKills);
}

TEST(Kill, FirstStartCutShortIsRepairedByTheNext) {
    const fs::path source = fs::path(VORTELM_SOURCE_DIR) / "data";
    // The kills fall within the time a whole copy takes here.
    int copyUs = 0;
    {
        TempDir probe;
        const auto t0 = std::chrono::steady_clock::now();
        ASSERT_TRUE(InstallDataTree(source.string(), probe.path.string()).complete);
        copyUs = static_cast<int>(std::chrono::duration_cast<std::chrono::microseconds>(
                                      std::chrono::steady_clock::now() - t0)
                                      .count());
    }
    std::mt19937 rng(19);
    int cut = 0;
    for (int i = 0; i < 30; ++i) {
        TempDir home;
        const bool killed =
            KillDuring([&] { (void)InstallDataTree(source.string(), home.path.string()); },
                       std::uniform_int_distribution<int>(0, std::max(copyUs, 1))(rng));
        if (killed && !DataHomeComplete(home.path.string())) ++cut;
        // A file the user changed after the cut stays as it is.
        const fs::path mine = home.path / "mctypes.dat";
        const bool hadMine = fs::exists(mine) && fs::file_size(mine) > 0;
        if (hadMine) std::ofstream(mine) << "[MINE]\n";
        const DataCopyResult again = InstallDataTree(source.string(), home.path.string());
        EXPECT_TRUE(again.complete);
        EXPECT_TRUE(again.errors.empty());
        EXPECT_TRUE(DataHomeComplete(home.path.string()));
        for (const auto& e : fs::recursive_directory_iterator(source)) {
            if (!e.is_regular_file()) continue;
            const fs::path copy = home.path / fs::relative(e.path(), source);
            if (hadMine && copy == mine) {
                EXPECT_EQ(ReadAll(copy), "[MINE]\n");
                continue;
            }
            EXPECT_EQ(ReadAll(copy), ReadAll(e.path())) << copy;
        }
    }
    std::printf("[kill] first start: 30 kills, %d cut the copy short, all repaired\n", cut);
    EXPECT_GT(cut, 0);
}

}  // namespace
}  // namespace vortelm
