#include "core/ProgramState.h"

#include "core/Host.h"
#include "core/RunTimeError.h"

namespace vortelm {

// A state made without a host gets its own quiet one: it answers every
// question with its default and draws nothing.
ProgramState::ProgramState() : ownHost_(std::make_unique<Host>()), host(ownHost_.get()) {}

ProgramState::ProgramState(Host& h) : host(&h) {}

ProgramState::~ProgramState() = default;

SfrRecord& SfrRecords::operator[](size_t i) {
    CheckBound(static_cast<long long>(i), kSfrBound, "SFR table");
    if (i >= made_.size()) {
        // The whole table is reserved at once (address space only, touched
        // as records are made), so the records never move.
        if (made_.capacity() < size()) made_.reserve(size());
        made_.resize(i + 1);
    }
    return made_[i];
}

const SfrRecord& SfrRecords::operator[](size_t i) const {
    static const SfrRecord kNone;
    return i < made_.size() ? made_[i] : kNone;
}

std::span<SfrRecord> SfrRecords::first(size_t n) {
    if (n == 0) return {};
    (void)(*this)[n - 1];
    return {made_.data(), n};
}

void SetProgramFolderDefaults(ProgramState& st) {
    st.PATH_LOAD = st.programFolder;
    st.PATH_SAVE = st.programFolder;
    st.PATH_SCRIPT = st.programFolder;
    st.PATH_LOG = st.programFolder;
    const std::string drive = st.programFolder.substr(0, 1);
    for (int i = 0; i <= 9; ++i) {
        st.LoadFileMemos[i].drive = drive;
        st.LoadFileMemos[i].folder = st.programFolder;
        st.LoadFileMemos[i].type = 0;
        st.SaveFileMemos[i].drive = drive;
        st.SaveFileMemos[i].folder = st.programFolder;
        st.SaveFileMemos[i].type = 0;
    }
}

double FormScale(const ProgramState& st) {
    return st.SCALEFACTOR / 100.0;
}

void CheckBound(long long index, long long bound, const char* what) {
    if (index < 0 || index > bound)
        throw RunTimeError(std::string(what) + " index " + std::to_string(index) +
                           " out of range 0 to " + std::to_string(bound));
}

}  // namespace vortelm
