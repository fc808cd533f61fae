#pragma once
// A large area of fresh (zeroed) pages, reserved at once and touched only
// where it is written, starting on a large-page boundary. Large pages make
// the first touch of many pages a fraction as costly; the memory image asks
// for them only once a bulk load shows, a scratch area may ask at once.

#include <cstddef>
#include <cstdint>

namespace vortelm {

class FreshPages {
  public:
    FreshPages() = default;
    // Throws std::bad_alloc when the address space cannot be had.
    explicit FreshPages(size_t size, bool largePages);
    FreshPages(FreshPages&& other) noexcept;
    FreshPages& operator=(FreshPages&& other) noexcept;
    FreshPages(const FreshPages&) = delete;
    FreshPages& operator=(const FreshPages&) = delete;
    ~FreshPages();

    [[nodiscard]] uint8_t* data() const { return data_; }
    [[nodiscard]] size_t size() const { return size_; }
    // Large pages for the bytes from..to-1 (from the large page that holds
    // from on).
    void useLargePages(size_t from, size_t to);

  private:
    void* mapping_ = nullptr;
    size_t mappingSize_ = 0;
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
};

}  // namespace vortelm
