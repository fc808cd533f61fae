#include "image/ImageLoad.h"

#include <algorithm>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "image/Dump.h"

namespace vortelm {

void LoadImageFile(ProgramState& st, std::string_view name, const ImageFileReader& reader) {
    st.selections.count = 0;
    if (!reader) return;
    try {
        reader(st, ResolveInProgramFolder(st, name));
    } catch (const RunTimeError& e) {
        // The reader's own report; the caller goes on with an empty image.
        Text2Buffer(st, std::string("\r\n*ERROR: ") + e.what());
        st.selections.count = 0;
    }
}

std::vector<uint8_t> FlattenSelections(ProgramState& st) {
    const auto& sel = st.selections;
    int64_t length = 0;
    for (int i = 0; i < sel.count; ++i) length += int64_t{sel.end[i]} - sel.start[i] + 1;
    std::vector<uint8_t> image;
    image.reserve(static_cast<size_t>(std::max<int64_t>(length, 0)));
    for (int i = 0; i < sel.count; ++i)
        for (int32_t a = sel.start[i]; a <= sel.end[i]; ++a) {
            image.push_back(ReadDumpByte(st.dump, a));
            SetValid(st.dump, a, kTrue);
        }
    return image;
}

}  // namespace vortelm
