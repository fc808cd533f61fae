#include "core/SafeFile.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace vortelm {

namespace {

std::string FolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

SafeWriteResult Failed(int error) {
    return {false, std::strerror(error)};
}

bool WriteAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// Writes the pieces in order, up to IOV_MAX of them or kEarlySync bytes per
// call. With sync, each call's bytes start on their way to the disk at once,
// so that the final sync waits for the last of them only instead of all.
constexpr size_t kEarlySync = size_t(4) << 20;

bool WriteAllPieces(int fd, std::span<const std::string_view> pieces, bool sync) {
    std::vector<iovec> iov;
    iov.reserve(std::min<size_t>(pieces.size(), IOV_MAX));
    size_t next = 0;
    size_t skip = 0;  // of pieces[next], already in an earlier call
    off_t written = 0;
    while (next < pieces.size()) {
        iov.clear();
        size_t bytes = 0;
        while (next < pieces.size() && iov.size() < IOV_MAX && bytes < kEarlySync) {
            std::string_view p = pieces[next].substr(skip);
            if (bytes + p.size() > kEarlySync) {
                p = p.substr(0, kEarlySync - bytes);
                skip += p.size();
            } else {
                ++next;
                skip = 0;
            }
            if (!p.empty()) iov.push_back({const_cast<char*>(p.data()), p.size()});
            bytes += p.size();
        }
        size_t first = 0;
        while (first < iov.size()) {
            const ssize_t n =
                ::writev(fd, iov.data() + first, static_cast<int>(iov.size() - first));
            if (n < 0) {
                if (errno == EINTR) continue;
                return false;
            }
            // A short write: drop what went out and go on from there.
            auto left = static_cast<size_t>(n);
            while (first < iov.size() && left >= iov[first].iov_len) left -= iov[first++].iov_len;
            if (first < iov.size()) {
                iov[first].iov_base = static_cast<char*>(iov[first].iov_base) + left;
                iov[first].iov_len -= left;
            }
        }
        if (sync && bytes > 0)
            (void)::sync_file_range(fd, written, static_cast<off_t>(bytes), SYNC_FILE_RANGE_WRITE);
        written += static_cast<off_t>(bytes);
    }
    return true;
}

template <class Write>
SafeWriteResult Replace(const std::string& path, bool sync, Write&& writeAll) {
    const size_t slash = path.rfind('/');
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::string folder = FolderOf(path);
    std::string pattern = (folder == "/" ? std::string() : folder) + "/." + base + ".XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int fd = ::mkstemp(name.data());
    if (fd < 0) return Failed(errno);
    const std::string temp(name.data());
    // A replaced file keeps its permissions; a new one gets the usual ones.
    struct stat old {};
    if (::stat(path.c_str(), &old) == 0)
        (void)::fchmod(fd, old.st_mode & 07777);
    else {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        (void)::fchmod(fd, 0666 & ~mask);
    }
    if (!writeAll(fd) || (sync && ::fsync(fd) != 0)) {
        const int error = errno;
        ::close(fd);
        ::unlink(temp.c_str());
        return Failed(error);
    }
    if (::close(fd) != 0) {
        const int error = errno;
        ::unlink(temp.c_str());
        return Failed(error);
    }
    if (::rename(temp.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(temp.c_str());
        return Failed(error);
    }
    if (!sync) return {true, {}};
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        (void)::fsync(dir);
        ::close(dir);
    }
    return {true, {}};
}

}  // namespace

SafeWriteResult ReplaceFile(const std::string& path, std::string_view bytes) {
    return Replace(path, true, [&](int fd) { return WriteAll(fd, bytes.data(), bytes.size()); });
}

SafeWriteResult ReplaceFileUnsynced(const std::string& path, std::string_view bytes) {
    return Replace(path, false, [&](int fd) { return WriteAll(fd, bytes.data(), bytes.size()); });
}

SafeWriteResult ReplaceFile(const std::string& path, std::span<const std::string_view> pieces) {
    return Replace(path, true, [&](int fd) { return WriteAllPieces(fd, pieces, true); });
}

}  // namespace vortelm
