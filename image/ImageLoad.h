#pragma once
// One load-and-flatten of an image file: the loader and core of a kernel, a
// flash driver and a helper program all come as HEX (or S-record) files that
// are read into the memory image and then sent as one run of bytes.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {

struct ProgramState;

// Reads an image file into dump memory: clears the selection list and leaves
// one selection for each contiguous run of addresses, reporting its own
// errors (ReadHexFile, ReadSRecordFile). The program passes it in, so that
// tests can put a reader of their own in place.
using ImageFileReader = std::function<void(ProgramState& st, const std::string& path)>;

// Empties the selection list, then reads the file, named as the program
// folder names it, with the reader. A bound error of the reader is logged as
// one "*ERROR: " line and leaves the list empty; no reader reads nothing.
void LoadImageFile(ProgramState& st, std::string_view name, const ImageFileReader& reader);

// The bytes of the selections one after the other, as they go to the target:
// the gaps between selections are not filled. Each byte taken is marked
// valid.
[[nodiscard]] std::vector<uint8_t> FlattenSelections(ProgramState& st);

}  // namespace vortelm
