// Start the command-line program on a fresh data home, _quit, and read what
// it wrote: the files read back into a state that writes the same bytes, and
// a second start and _quit leaves both files byte-identical.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "config/Kernels.h"
#include "config/Preferences.h"
#include "config/Startup.h"
#include "tests/config/TestFiles.h"

namespace vortelm {
namespace {

using testing::DataHome;

#ifdef VORTELM_CLI
int RunCliQuit(const std::string& home) {
    const std::string cmd = "echo _quit | '" + std::string(VORTELM_CLI) + "' --home '" + home +
                            "' > '" + home + ".out' 2>&1";
    return std::system(cmd.c_str());
}

std::string Slurp(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

TEST(CliRoundTrip, QuitWritesFilesThatReadBackAndStayByteIdentical) {
    const std::string parent = std::filesystem::temp_directory_path() /
                               ("vortelm-cli-rt-" + std::to_string(::getpid()));
    const std::string home = parent + "/home";
    std::filesystem::create_directories(parent);
    ASSERT_EQ(RunCliQuit(home), 0) << Slurp(home + ".out");
    const std::string ini1 = Slurp(home + "/default.ini");
    const std::string dat1 = Slurp(home + "/kernel.dat");
    ASSERT_FALSE(ini1.empty());
    ASSERT_FALSE(dat1.empty());
    EXPECT_EQ(Slurp(home + ".out").find("*ERROR"), std::string::npos) << Slurp(home + ".out");

    // Read back as start-up does: the state writes the very same files.
    DataHome h;
    h.st->programFolder = home;
    ResetConfigurationTables(*h.st);
    ReadDataFiles(*h.st);
    ReadDefaultPreferences(*h.st);
    EXPECT_EQ(h.st->terminalBuffer, "");
    EXPECT_GT(h.st->kernelCount, 0);
    EXPECT_GT(h.st->memoryUnitCount, 0);
    EXPECT_GT(h.st->sfrCount, 2);
    EXPECT_EQ(PreferencesText(*h.st), ini1);
    ASSERT_TRUE(WriteKernels(*h.st, parent + "/kernel.again"));
    EXPECT_EQ(Slurp(parent + "/kernel.again"), dat1);

    // A second start and end of the program leaves both files as they were.
    ASSERT_EQ(RunCliQuit(home), 0);
    EXPECT_EQ(Slurp(home + "/default.ini"), ini1);
    EXPECT_EQ(Slurp(home + "/kernel.dat"), dat1);
    std::filesystem::remove_all(parent);
}
#endif

}  // namespace
}  // namespace vortelm
