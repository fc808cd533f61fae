#include "forms/FKernel.h"

#include "config/Kernels.h"
#include "config/Startup.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "image/HexFile.h"
#include "image/ImageLoad.h"
#include "image/Selections.h"

namespace vortelm::forms {

namespace {

void Say(ProgramState& st, std::string_view text) {
    st.host->messageBox(text, MsgButtons::Ok, MsgIcon::Exclamation);
}

bool Exists(ProgramState& st, const std::string& name) {
    return !name.empty() && FileExists(st, name, 0);
}

}  // namespace

void FKernel::RefreshKernelList() {
    lines_.clear();
    for (int i = 0; i < st_.kernelCount; ++i) {
        const Kernel& k = st_.kernels[static_cast<size_t>(i)];
        lines_.push_back(std::string(i == st_.CurrentKernel ? "A" : " ") + k.name + "\t" +
                         k.monitorPath + "\t" + k.loaderPath);
    }
}

void FKernel::BActivate(int index) {
    if (index < 0 || index >= st_.kernelCount) return;
    st_.CurrentKernel = static_cast<int16_t>(index);
    RefreshKernelList();
}

int FKernel::BAdd() {
    AddKernel(st_);
    RefreshKernelList();
    return st_.kernelCount - 1;
}

void FKernel::BRemove(int index) {
    if (index < 0 || index >= st_.kernelCount) return;
    if (IsDefaultKernel(st_, index)) {
        Say(st_, "This is one of the default Kernels. You can´t remove it !");
        return;
    }
    if (st_.host->messageBox("Do you really want to remove this Kernel ?", MsgButtons::YesNo,
                             MsgIcon::Question) != MsgAnswer::Yes)
        return;
    RemoveKernel(st_, index);
    RefreshKernelList();
}

int FKernel::BEdit(int index) {
    if (index < 0 || index >= st_.kernelCount) return -1;
    if (IsDefaultKernel(st_, index)) {
        Say(st_, "This is one of the default Kernels. You can´t modify it !");
        return -1;
    }
    return index;
}

void FKernel::BOk() {
    WriteConfigurationFiles(st_);
    st_.host->refreshFeatureButtons();
}

FKernelEdit::FKernelEdit(ProgramState& st, int index) : st_(st), index_(index) {
    CheckBound(index, st.kernelCount - 1, "kernel");
    const Kernel& k = st.kernels[static_cast<size_t>(index)];
    TName = k.name;
    TVortelmPath = k.monitorPath;
    TLoaderPath = k.loaderPath;
    TStart = HexText(k.startAddress, 6);
    TEnd = HexText(k.endAddress, 6);
    TPatchStart = HexText(k.patchStartAddress, 6);
    CLoaderAck = k.loaderAck != 0;
    for (int i = 0; i < k.featureCount; ++i)
        LFeatures.push_back(k.features[static_cast<size_t>(i)].name);
}

void FKernelEdit::TVortelmPath_LostFocus() {
    if (!Exists(st_, TVortelmPath)) return;
    ClearSelections(st_.selections);
    // a bound error of the reader is its line in the log and an empty list
    LoadImageFile(st_, TVortelmPath,
                  [](ProgramState& s, const std::string& n) { ReadHexFile(s, n); });
    if (st_.selections.count == 0) return;
    TStart = HexText(LowestSelectedAddress(st_.selections), 6);
    TEnd = HexText(HighestSelectedAddress(st_.selections), 6);
    UnreadSelections(st_);
    ClearSelections(st_.selections);
}

std::string FKernelEdit::BOk() {
    if (!Exists(st_, TVortelmPath)) return "Vortelm Kernel File does not exist !";
    if (!Exists(st_, TLoaderPath)) return "Loader File does not exist !";
    Kernel& k = st_.kernels[static_cast<size_t>(index_)];
    k.name = TName;
    k.monitorPath = TVortelmPath;
    k.loaderPath = TLoaderPath;
    k.startAddress = HexValue(TStart) < 0 ? 0 : HexValue(TStart);
    k.endAddress = HexValue(TEnd) < 0 ? 0 : HexValue(TEnd);
    k.patchStartAddress = HexValue(TPatchStart) < 0 ? 0 : HexValue(TPatchStart);
    k.loaderAck = CLoaderAck ? kTrue : kFalse;
    k.featureCount = 0;
    for (const std::string& f : LFeatures) AddFeature(st_, f, index_);
    return {};
}

void FKernelEdit::BAddFeature(std::string_view name) {
    if (!name.empty()) LFeatures.emplace_back(name);
}

void FKernelEdit::BRemove(int featureIndex) {
    if (featureIndex >= 0 && static_cast<size_t>(featureIndex) < LFeatures.size())
        LFeatures.erase(LFeatures.begin() + featureIndex);
}

std::vector<std::string> FKernelSelectFeatureNames(const ProgramState& st) {
    std::vector<std::string> names;
    for (int i = 0; i < st.featureNameCount; ++i)
        names.push_back(st.featureNames[static_cast<size_t>(i)]);
    return names;
}

}  // namespace vortelm::forms
