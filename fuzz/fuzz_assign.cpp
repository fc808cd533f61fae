// The expressions: the input's first line goes to _assign's evaluator, the
// rest to the condition parser and evaluator. A run-time error of the
// program (a variable past 99, a condition past 32 bits) is an expected end.
#include <string>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/TestHost.h"
#include "shell/Expressions.h"

namespace {

struct Harness {
    vortelm::TestHost host;
    vortelm::ProgramState st{host};
    vortelm::shell::Session session{st};
    Harness() {
        st.sfrTable[0].name = "SYSCON";
        st.sfrTable[0].address = 0xFF12;
        st.sfrTable[1].name = "P2";
        st.sfrTable[1].address = 0xFFC0;
        st.sfrCount = 2;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Harness h;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const size_t nl = text.find('\n');
    const std::string assign = text.substr(0, nl);
    std::string condition = nl == std::string::npos ? std::string() : text.substr(nl + 1);
    try {
        const int32_t r = vortelm::shell::AssignExpression(h.session, assign);
        if (r != 0 && r != -1) __builtin_trap();
        const int32_t v = vortelm::shell::EvaluateExpression(h.session, assign);
        if (v < -1 || v > 0xFFFFFF) __builtin_trap();
    } catch (const vortelm::RunTimeError&) {
    }
    try {
        vortelm::shell::ConditionRecord record;
        const int32_t p = vortelm::shell::ParseCondition(h.st, condition, record);
        if (p != 1 && p != 2 && p != -1) __builtin_trap();
        (void)vortelm::shell::EvaluateCondition(h.session, record);
    } catch (const vortelm::RunTimeError&) {
    }
    return 0;
}
