#pragma once
// The kernel forms: the list of kernels (FKernel), one kernel's files,
// addresses and features (FKernelEdit), and the feature picker
// (FKernelSelectFeature).

#include <string>
#include <string_view>
#include <vector>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::forms {

class FKernel {
  public:
    explicit FKernel(ProgramState& st) : st_(st) {}

    // One line a kernel: "A" for the current one, else a blank, then name,
    // monitor path and loader path separated by tabs.
    void RefreshKernelList();
    [[nodiscard]] const std::vector<std::string>& LKernel() const { return lines_; }

    void BActivate(int index);
    // A new kernel; FKernelEdit opens on the index returned.
    [[nodiscard]] int BAdd();
    void BRemove(int index);
    // The kernel FKernelEdit opens on, or -1 for a default kernel (after
    // its message).
    [[nodiscard]] int BEdit(int index);
    // Takes the changes: the kernel and preference files are written.
    void BOk();

  private:
    ProgramState& st_;
    std::vector<std::string> lines_;
};

class FKernelEdit {
  public:
    FKernelEdit(ProgramState& st, int index);

    // Leaving TVortelmPath: the monitor file's lowest and highest address
    // fill the start and end fields (the selections are replaced).
    void TVortelmPath_LostFocus();
    // Checks the files, then stores the fields. The message, or empty when
    // the record took them.
    [[nodiscard]] std::string BOk();
    void BAddFeature(std::string_view name);
    void BRemove(int featureIndex);

    std::string TName;
    std::string TVortelmPath;
    std::string TLoaderPath;
    std::string TStart;
    std::string TEnd;
    std::string TPatchStart;
    bool CLoaderAck = true;
    std::vector<std::string> LFeatures;

  private:
    ProgramState& st_;
    int index_;
};

// The names a kernel feature may have, as the program knows them.
[[nodiscard]] std::vector<std::string> FKernelSelectFeatureNames(const ProgramState& st);

}  // namespace vortelm::forms
