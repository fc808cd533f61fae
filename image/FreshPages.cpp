#include "image/FreshPages.h"

#include <sys/mman.h>

#include <new>
#include <utility>

namespace vortelm {

namespace {

constexpr size_t kLargePage = size_t(2) << 20;

}  // namespace

FreshPages::FreshPages(size_t size, bool largePages) {
    mappingSize_ = size + kLargePage;
    mapping_ = ::mmap(nullptr, mappingSize_, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapping_ == MAP_FAILED) {
        mapping_ = nullptr;
        throw std::bad_alloc();
    }
    const auto a = (reinterpret_cast<uintptr_t>(mapping_) + kLargePage - 1) & ~(kLargePage - 1);
    data_ = reinterpret_cast<uint8_t*>(a);
    size_ = size;
    if (largePages) useLargePages(0, size_);
}

void FreshPages::useLargePages(size_t from, size_t to) {
    to = to < size_ ? to : size_;
    from &= ~(kLargePage - 1);
    if (data_ && from < to) ::madvise(data_ + from, to - from, MADV_HUGEPAGE);
}

FreshPages::FreshPages(FreshPages&& other) noexcept
    : mapping_(std::exchange(other.mapping_, nullptr)),
      mappingSize_(std::exchange(other.mappingSize_, 0)),
      data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)) {}

FreshPages& FreshPages::operator=(FreshPages&& other) noexcept {
    if (this != &other) {
        if (mapping_) ::munmap(mapping_, mappingSize_);
        mapping_ = std::exchange(other.mapping_, nullptr);
        mappingSize_ = std::exchange(other.mappingSize_, 0);
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

FreshPages::~FreshPages() {
    if (mapping_) ::munmap(mapping_, mappingSize_);
}

}  // namespace vortelm
