#pragma once
// The kernel table ("kernel.dat"): loader and monitor pairs with their
// addresses and the features (monitor commands) they understand, and the
// list of feature names the program knows.

#include <cstdint>
#include <string_view>

namespace vortelm {

struct ProgramState;

// Fills the list of known feature names (14 of them) in their fixed order.
void InitFeatureNames(ProgramState& st);

// Fills the table from a kernel file; a missing file logs
// "*ERROR: File ... not found" and leaves the table empty.
void ReadKernels(ProgramState& st, std::string_view path);
// Replaces the kernel file (temporary file and rename). False if it could
// not be written.
bool WriteKernels(const ProgramState& st, std::string_view path);

[[nodiscard]] int KernelIndexByName(const ProgramState& st, std::string_view name);
[[nodiscard]] int KernelIndexByMonitorPath(const ProgramState& st, std::string_view path);

// Makes the named kernel current if it exists, then copies the start and
// end address of the current kernel. Throws RunTimeError when CurrentKernel
// lies outside 0 to 15.
void SelectKernelByName(ProgramState& st, std::string_view name);
// Selects the controller type's default kernel (K-Line one when KLINE is 1),
// or the family's default name for an unknown controller type.
void SelectDefaultKernel(ProgramState& st);

// The one feature test: true if the kernel lists the feature with its flag
// set. A negative index means CurrentKernel; an index outside the table (no
// kernel chosen yet) has no features.
[[nodiscard]] bool HasFeature(const ProgramState& st, std::string_view feature, int index);
// The four kernels the configuration dialog may not change or remove.
[[nodiscard]] bool IsDefaultKernel(const ProgramState& st, int index);

void AddKernel(ProgramState& st);
void RemoveKernel(ProgramState& st, int index);
void AddFeature(ProgramState& st, std::string_view feature, int index);
void RemoveFeature(ProgramState& st, std::string_view feature, int index);

}  // namespace vortelm
