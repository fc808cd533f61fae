#pragma once
// The about form (version, build date, licence) and the launch form FInfo
// that shows start-up's progress.

#include <string>
#include <vector>

namespace vortelm::forms {

class FAbout {
  public:
    static constexpr const char* kTitle = "About Vortelm";

    FAbout();

    // The label of the version: major.minor.revision.
    [[nodiscard]] const std::string& version() const { return version_; }
    [[nodiscard]] const std::string& buildDate() const { return buildDate_; }
    [[nodiscard]] const std::string& licence() const { return licence_; }
    // The lines the form shows, top to bottom.
    [[nodiscard]] std::vector<std::string> lines() const;

  private:
    std::string version_;
    std::string buildDate_;
    std::string licence_;
};

class FInfo {
  public:
    static constexpr const char* kCaption = "Launching Vortelm";

    // Start-up's progress (0 to 100); a maximum of 0 ends the launch and
    // hides the form.
    void progress(long long value, long long maximum);
    [[nodiscard]] bool visible() const { return visible_; }
    [[nodiscard]] int XProgress() const { return value_; }

  private:
    bool visible_ = true;
    int value_ = 0;
};

}  // namespace vortelm::forms
