// The one QApplication of the test program, made before the first test and
// ended after the last; the window draws on no display.

#include <gtest/gtest.h>

#include <QApplication>

#include <memory>

namespace {

class QtEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        app_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override { app_.reset(); }

  private:
    int argc_ = 1;
    char name_[8] = "test_ui";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> app_;
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace

// Under LeakSanitizer: the font and display libraries below Qt keep caches
// for the life of the process on purpose.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\nleak:libfreetype\nleak:libglib\nleak:libQt6Gui\nleak:libQt6Core\n"
           "leak:libQt6Widgets\nleak:libdbus\nleak:libxkbcommon\nleak:libEGL\nleak:libGLX\n";
}
