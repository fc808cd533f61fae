#pragma once
// The one way the program replaces a file: the bytes go to a temporary file
// with a unique name in the same folder, are flushed and synced to the disk,
// and the temporary file is renamed over the old one (then the folder is
// synced). A kill or a full disk at any point leaves the old file or the new
// one, never a mix or an empty file, and a failure leaves the old file alone.

#include <span>
#include <string>
#include <string_view>

namespace vortelm {

struct SafeWriteResult {
    bool ok = false;
    // The system's reason when not ok (strerror of the failing call).
    std::string reason;
};

// Replaces the file at path (a file-system path) by bytes.
[[nodiscard]] SafeWriteResult ReplaceFile(const std::string& path, std::string_view bytes);
// As ReplaceFile (unique temporary file, renamed over the old one, so that
// a reader finds the old file or the new one whole) but without the syncs
// to the disk: only for files the program can make again from others (a
// cache), where a crash may cost the new contents but the wait for the
// disk would be paid at every write.
[[nodiscard]] SafeWriteResult ReplaceFileUnsynced(const std::string& path, std::string_view bytes);

// Replaces the file at path by the pieces one after the other (written
// with few calls and without first joining them in memory).
[[nodiscard]] SafeWriteResult ReplaceFile(const std::string& path,
                                          std::span<const std::string_view> pieces);

}  // namespace vortelm
