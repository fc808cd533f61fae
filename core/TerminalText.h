#pragma once
// The running text of the terminal: a string that is read like a
// std::string, and whose front is cut off cheaply. Once the terminal holds
// its most lines every new text drops its first line; moving the rest of the
// text down each time cost a copy of the whole text per line (most of a
// script statement's time). The cut is remembered instead and made when the
// text is read as a whole, or when the part cut off has grown as long as
// the rest. Everything runs on the one user-interface thread.

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace vortelm {

class TerminalText {
  public:
    // The whole text. Reading it makes a pending cut.
    [[nodiscard]] const std::string& str() const {
        settle();
        return text_;
    }
    // NOLINTNEXTLINE(google-explicit-constructor): read where a string is.
    operator const std::string&() const { return str(); }
    // The text without making the cut (valid until the next change).
    [[nodiscard]] std::string_view view() const { return std::string_view(text_).substr(cut_); }

    [[nodiscard]] std::size_t size() const { return text_.size() - cut_; }
    [[nodiscard]] bool empty() const { return size() == 0; }
    [[nodiscard]] const char* data() const { return str().data(); }
    [[nodiscard]] std::string::const_iterator begin() const { return str().begin(); }
    [[nodiscard]] std::string::const_iterator end() const { return str().end(); }
    template <class... Args>
    [[nodiscard]] std::size_t find(Args&&... args) const {
        return str().find(std::forward<Args>(args)...);
    }
    template <class... Args>
    [[nodiscard]] std::size_t rfind(Args&&... args) const {
        return str().rfind(std::forward<Args>(args)...);
    }
    template <class... Args>
    [[nodiscard]] std::string substr(Args&&... args) const {
        return str().substr(std::forward<Args>(args)...);
    }

    void clear() {
        text_.clear();
        cut_ = 0;
    }
    void append(std::string_view text) { text_.append(text); }
    // Drops the first n characters (all there are when n is larger).
    void dropFront(std::size_t n) {
        cut_ += std::min(n, size());
        if (cut_ >= kLeastCut && cut_ >= text_.size() - cut_) settle();
    }

    friend bool operator==(const TerminalText& a, std::string_view b) { return a.view() == b; }
    friend std::ostream& operator<<(std::ostream& out, const TerminalText& t) {
        return out << t.view();
    }

  private:
    // Cuts smaller than this wait: the text is then moved at most once per
    // this many characters dropped.
    static constexpr std::size_t kLeastCut = 64 * 1024;
    void settle() const {
        if (cut_ == 0) return;
        text_.erase(0, cut_);
        cut_ = 0;
    }
    mutable std::string text_;
    mutable std::size_t cut_ = 0;
};

}  // namespace vortelm
