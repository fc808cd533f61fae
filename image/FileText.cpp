#include "image/FileText.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace vortelm {

std::optional<FileBytes> FileBytes::Open(const std::string& nativeName) {
    const int fd = ::open(nativeName.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    struct stat sb {};
    if (::fstat(fd, &sb) != 0 || S_ISDIR(sb.st_mode)) {
        ::close(fd);
        return std::nullopt;
    }
    FileBytes f;
    if (S_ISREG(sb.st_mode) && sb.st_size > 0) {
        void* p = ::mmap(nullptr, static_cast<size_t>(sb.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (p != MAP_FAILED) {
            // The pages are read ahead while the reader works through the
            // first ones, instead of all of them before it starts.
            ::madvise(p, static_cast<size_t>(sb.st_size), MADV_SEQUENTIAL);
            ::madvise(p, static_cast<size_t>(sb.st_size), MADV_WILLNEED);
            f.data_ = static_cast<const char*>(p);
            f.size_ = static_cast<size_t>(sb.st_size);
            f.mapped_ = true;
            ::close(fd);
            return f;
        }
    }
    // Not mappable (empty, a pipe, a special file): read it.
    char buf[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n <= 0) break;
        f.copy_.insert(f.copy_.end(), buf, buf + n);
    }
    ::close(fd);
    f.data_ = f.copy_.data();
    f.size_ = f.copy_.size();
    return f;
}

FileBytes::FileBytes(FileBytes&& other) noexcept
    : data_(other.data_),
      size_(other.size_),
      mapped_(other.mapped_),
      copy_(std::move(other.copy_)) {
    if (!mapped_) data_ = copy_.data();
    other.data_ = nullptr;
    other.size_ = 0;
    other.mapped_ = false;
}

FileBytes::~FileBytes() {
    if (mapped_) ::munmap(const_cast<char*>(data_), size_);
}

std::string_view LineCursor::next() {
    const char* base = text_.data() + pos_;
    // The next line feed is kept between calls, so that a file of carriage
    // returns alone is not searched to its end once per line.
    if (!nlKnown_ || nl_ < pos_) {
        nlKnown_ = true;
        const void* nl = std::memchr(base, '\n', text_.size() - pos_);
        nl_ = nl ? static_cast<size_t>(static_cast<const char*>(nl) - text_.data()) : text_.size();
    }
    size_t len = nl_ - pos_;
    // A carriage return ends the line too, alone or before the line feed.
    if (const void* cr = std::memchr(base, '\r', len)) {
        len = static_cast<size_t>(static_cast<const char*>(cr) - base);
        pos_ += len + 1;
        if (pos_ < text_.size() && text_[pos_] == '\n') ++pos_;
        return {base, len};
    }
    pos_ = nl_ < text_.size() ? nl_ + 1 : nl_;
    return {base, len};
}

}  // namespace vortelm
