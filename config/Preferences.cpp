#include "config/Preferences.h"

#include <array>
#include <optional>

#include "config/ConfigText.h"
#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"

namespace vortelm {

namespace {

constexpr std::array<const char*, 9> kSections = {"[Vortelm]", "[Communication]", "[Controller]",
                                                  "[Memory]",  "[Register]",      "[Commands]",
                                                  "[Files]",   "[Messages]",      "[Frontend]"};

// The protocol bytes with a key, in the order they are written.
struct CodeKey {
    const char* key;
    uint8_t MessageCodes::*field;
};
constexpr std::array<CodeKey, 14> kCodeKeys = {{
    {"A_LOADER_STARTED=0x", &MessageCodes::A_LOADER_STARTED},
    {"A_APPLICATION_STARTED=0x", &MessageCodes::A_APPLICATION_STARTED},
    {"C_WRITE_BLOCK=0x", &MessageCodes::C_WRITE_BLOCK},
    {"C_READ_BLOCK=0x", &MessageCodes::C_READ_BLOCK},
    {"C_WRITE_WORD=0x", &MessageCodes::C_WRITE_WORD},
    {"C_EINIT=0x", &MessageCodes::C_EINIT},
    {"C_TEST_COMM=0x", &MessageCodes::C_TEST_COMM},
    {"C_SWRESET=0x", &MessageCodes::C_SWRESET},
    {"C_GO=0x", &MessageCodes::C_GO},
    {"C_CALL=0x", &MessageCodes::C_CALL},
    {"C_GETCHECKSUM=0x", &MessageCodes::C_GETCHECKSUM},
    {"C_ASC1_CON=0x", &MessageCodes::C_ASC1_CON},
    {"A_ACK1=0x", &MessageCodes::A_ACK1},
    {"A_ACK2=0x", &MessageCodes::A_ACK2},
}};

// A file memo of the [Files] section: which key, which table and entry.
struct FileKey {
    const char* key;
    const char* typeKey;
    bool save;  // SaveFileMemos, else LoadFileMemos
    int entry;
};
constexpr std::array<FileKey, 7> kFileKeys = {{
    {"LOADFILE=", "LOADFILETYPE=", false, 0},
    {"CONFIGLOADFILE=", "CONFIGLOADFILETYPE=", false, 1},
    {"CONFIGSAVEFILE=", "CONFIGSAVEFILETYPE=", true, 1},
    {"SCRIPTFILE=", "SCRIPTFILETYPE=", false, 2},
    {"DRIVERFILE=", "DRIVERFILETYPE=", false, 3},
    {"REGSETFILE=", "REGSETFILETYPE=", false, 4},
    {"BINFILE=", "BINFILETYPE=", false, 5},
}};

// A path value of [Files]: unquoted, the program folder when empty, then
// split at its last separator.
void SetFileMemo(const ProgramState& st, FileMemo& memo, std::string_view value) {
    std::string path = UnquotePath(value);
    if (path.empty()) path = st.programFolder;
    memo.drive = path.substr(0, 1);
    const auto sep = path.find_last_of("\\/");
    if (sep == std::string::npos) {
        memo.folder.clear();
        memo.name = path;
    } else {
        memo.folder = path.substr(0, sep);
        memo.name = path.substr(sep + 1);
    }
}

std::string MemoPath(const FileMemo& memo) {
    return QuotePath(memo.folder + "\\" + memo.name);
}

class PreferenceReader {
  public:
    explicit PreferenceReader(ProgramState& st)
        : st_(st), memory_(st, config::MemoryUnitReader::Form::Preferences) {}

    void line(const std::string& raw) {
        const std::string text = StripBlanks(raw, kTrue);
        const std::string upper = UpperCase(text);
        for (size_t s = 0; s < kSections.size(); ++s)
            if (upper.rfind(UpperCase(kSections[s]), 0) == 0) section_ = static_cast<int>(s + 1);
        switch (section_) {
            case 1:
                vortelm(text, upper);
                break;
            case 2:
                communication(text, upper);
                break;
            case 3:
                controller(text, upper);
                break;
            case 4:
                memory_.line(upper);
                break;
            case 5:
                registerLine(upper);
                break;
            case 6:
                if (upper.rfind("EINIT", 0) == 0) st_.EINIT = 1;
                break;
            case 7:
                files(text, upper);
                break;
            case 8:
                messages(upper);
                break;
            case 9:
                frontend(text, upper);
                break;
            default:
                break;  // before any header
        }
    }

    void finish() { memory_.finish(); }

  private:
    // The key at the beginning of the upper-cased line; the value behind it.
    static std::optional<std::string> Value(const std::string& text, const std::string& upper,
                                            std::string_view key) {
        if (upper.compare(0, key.size(), key) != 0) return std::nullopt;
        return text.substr(key.size());
    }

    void takeKernelAddresses() {
        if (st_.CurrentKernel < 0) return;
        CheckBound(st_.CurrentKernel, kKernelBound, "kernel");
        st_.KernelStartAddress = st_.kernels[st_.CurrentKernel].startAddress;
        st_.KernelEndAddress = st_.kernels[st_.CurrentKernel].endAddress;
    }

    void vortelm(const std::string& text, const std::string& upper) {
        if (auto v = Value(text, upper, "IDLENGTH="))
            st_.IDLENGTH = static_cast<int16_t>(config::Val(*v));
        if (auto v = Value(text, upper, "KERNEL=")) {
            st_.CurrentKernel = static_cast<int16_t>(KernelIndexByName(st_, *v));
            takeKernelAddresses();
        }
        if (auto v = Value(text, upper, "TRANSFERBUFFERSTARTADDRESS="))
            st_.TRANSFERBUFFERSTARTADDRESS = HexValue(*v);
        if (auto v = Value(text, upper, "VORTELM=")) oldMonitor_ = *v, oldKeys_ = true;
        if (auto v = Value(text, upper, "VORTELMKLINE=")) oldMonitorKline_ = *v, oldKeys_ = true;
    }

    void communication(const std::string& text, const std::string& upper) {
        struct Key {
            const char* key;
            int16_t* small;
            int32_t* large;
        };
        const Key keys[] = {
            {"PORT=COM", &st_.PORT, nullptr},
            {"BAUDRATE=", nullptr, &st_.BAUDRATE},
            {"PARITY=", &st_.PARITY, nullptr},
            {"DATA=", &st_.DATA, nullptr},
            {"STOPBITS=", &st_.STOPBITS, nullptr},
            {"TIMEOUT=", nullptr, &st_.TIMEOUT},
            {"KLINE=", &st_.KLINE, nullptr},
            {"TMODE=", &st_.TMODE, nullptr},
            {"CONNECTTIMEOUT=", nullptr, &st_.CONNECTTIMEOUT},
            {"CONNECTRETRY=", nullptr, &st_.CONNECTRETRY},
            {"CHECKCONNECTION=", &st_.CHECKCONNECTION, nullptr},
            {"INITCHAR=", &st_.INITCHAR, nullptr},
            {"COMPORTS=", &st_.COMPORTS, nullptr},
        };
        for (const Key& k : keys) {
            auto v = Value(text, upper, k.key);
            if (!v) continue;
            const int32_t n = config::Val(*v);
            if (k.small)
                *k.small = static_cast<int16_t>(n);
            else
                *k.large = n;
            if (std::string_view(k.key) == "KLINE=" && oldKeys_) {
                st_.CurrentKernel = static_cast<int16_t>(
                    KernelIndexByMonitorPath(st_, st_.KLINE == 1 ? oldMonitorKline_ : oldMonitor_));
                takeKernelAddresses();
            }
        }
        if (auto v = Value(text, upper, "PORTNAME=")) st_.PORTNAME = UnquotePath(*v);
    }

    void controller(const std::string& text, const std::string& upper) {
        if (auto v = Value(text, upper, "MCTYPE=")) {
            st_.MCTYPE = *v;
            const int c = ControllerIndexByName(st_, st_.MCTYPE);
            if (c >= 0) {
                (void)ReadSfrFile(st_, st_.controllerTypes[c].registerDefinitionPath);
                ReloadSfrSets(st_);
            } else {
                st_.host->messageBox(
                    "The Controller Type in the preference file is not (no longer) supported. "
                    "Please select a different one in the target-configuration dialog ",
                    MsgButtons::Ok, MsgIcon::None);
            }
            CheckBound(c, kControllerTypeBound, "controller type");
            st_.ControllerFamily = ControllerFamilyCode(st_.controllerTypes[c].family);
            if (st_.CurrentKernel == -1) SelectDefaultKernel(st_);
        }
        if (auto v = Value(text, upper, "CLK=")) st_.CLK = config::Val(*v);
    }

    void registerLine(const std::string& upper) {
        const auto eq = upper.find('=');
        if (eq == std::string::npos) return;
        const std::string name = upper.substr(0, eq);
        InitRegister reg;
        reg.name = name;
        if (name.rfind("GENERIC", 0) != 0) {
            reg.value = HexValue(eq + 3 < upper.size() ? upper.substr(eq + 3) : "");
            const int32_t address = SfrAddressByName(st_, name);
            if (SfrIndexByName(st_, name) < 0) return;
            reg.address = std::to_string(address);
        } else {
            const auto comma = upper.find(',', eq);
            const std::string value =
                eq + 3 < upper.size()
                    ? upper.substr(eq + 3, comma == std::string::npos || comma < eq + 3
                                               ? std::string::npos
                                               : comma - eq - 3)
                    : "";
            reg.value = HexValue(value);
            const std::string address = comma != std::string::npos && comma + 3 < upper.size()
                                            ? upper.substr(comma + 3)
                                            : "";
            reg.address = std::to_string(HexValue(address));
        }
        CheckBound(st_.initRegisterCount, kInitRegisterBound, "initialisation register");
        st_.initRegisters[st_.initRegisterCount++] = std::move(reg);
    }

    void files(const std::string& text, const std::string& upper) {
        if (auto v = Value(text, upper, "SAVEFILE=")) SetFileMemo(st_, st_.saveFile, *v);
        if (auto v = Value(text, upper, "SAVEFORMAT="))
            st_.SAVEFORMAT = static_cast<int16_t>(config::Val(*v));
        if (auto v = Value(text, upper, "SAVEFILETYPE="))
            st_.SAVEFILETYPE = static_cast<int16_t>(config::Val(*v));
        if (auto v = Value(text, upper, "SAVERECORDSIZE="))
            st_.SAVERECORDSIZE = static_cast<int16_t>(config::Val(*v));
        if (auto v = Value(text, upper, "SAVESTARTADDR=0X")) {
            st_.SAVESTARTADDR = HexValue(*v);
            st_.saveAddressesFromPreferences = 1;
        }
        if (auto v = Value(text, upper, "SAVEENDADDR=0X")) {
            st_.SAVEENDADDR = HexValue(*v);
            st_.saveAddressesFromPreferences = 1;
        }
        for (const FileKey& k : kFileKeys) {
            FileMemo& memo = k.save ? st_.SaveFileMemos[k.entry] : st_.LoadFileMemos[k.entry];
            if (auto v = Value(text, upper, k.key)) SetFileMemo(st_, memo, *v);
            if (auto v = Value(text, upper, k.typeKey))
                memo.type = static_cast<int16_t>(config::Val(*v));
        }
        // LASTSCRIPTFILE(n)= and the old LASTSCRIPTFILE0= to LASTSCRIPTFILE3=
        if (auto n = Indexed(upper, "LASTSCRIPTFILE", 15, 3)) {
            const std::string v = UnquotePath(text.substr(text.find('=') + 1));
            if (!v.empty()) st_.lastScriptFiles[*n] = v;
        }
        if (auto n = Indexed(upper, "USERSCRIPT", 7, 3)) {
            const std::string v = UnquotePath(text.substr(text.find('=') + 1));
            if (!v.empty()) {
                st_.userScripts[*n].path = v;
                st_.userScripts[*n].flag = kTrue;
            }
        }
        if (auto n = Indexed(upper, "USERSCRIPTNAME", 7, -1))
            st_.userScripts[*n].name = text.substr(text.find('=') + 1);
        std::string* folders[] = {&st_.PATH_LOAD, &st_.PATH_SAVE, &st_.PATH_SCRIPT, &st_.PATH_LOG};
        const char* folderKeys[] = {"PATH_LOAD=", "PATH_SAVE=", "PATH_SCRIPT=", "PATH_LOG="};
        for (int i = 0; i < 4; ++i)
            if (auto v = Value(text, upper, folderKeys[i])) {
                const std::string path = UnquotePath(*v);
                if (!path.empty()) *folders[i] = path;
            }
    }

    // KEY(n)= with n from 0 to bound, or the old KEYn= with n from 0 to
    // oldBound; the index, if the line is one of them.
    static std::optional<int> Indexed(const std::string& upper, std::string_view key, int bound,
                                      int oldBound) {
        if (upper.compare(0, key.size(), key) != 0) return std::nullopt;
        const std::string rest = upper.substr(key.size());
        if (rest.size() >= 3 && rest[0] == '(') {
            const auto close = rest.find(')');
            if (close == std::string::npos || close + 1 >= rest.size() || rest[close + 1] != '=')
                return std::nullopt;
            const std::string digits = rest.substr(1, close - 1);
            if (digits.empty() || digits.size() > 3 ||
                digits.find_first_not_of("0123456789") != std::string::npos)
                return std::nullopt;
            const int n = std::stoi(digits);
            if (n > bound) return std::nullopt;
            return n;
        }
        if (oldBound >= 0 && rest.size() >= 2 && rest[0] >= '0' && rest[0] <= '0' + oldBound &&
            rest[1] == '=')
            return rest[0] - '0';
        return std::nullopt;
    }

    void messages(const std::string& upper) {
        for (const CodeKey& k : kCodeKeys)
            if (auto v = Value(upper, upper, UpperCase(k.key)))
                st_.codes.*k.field = static_cast<uint8_t>(HexValue(*v));
    }

    void frontend(const std::string& text, const std::string& upper) {
        if (auto v = Value(text, upper, "BLANK_CHAR=")) st_.BLANK_CHAR = *v;
        if (auto v = Value(text, upper, "COLOR_BGMARKED=0X")) st_.COLOR_BGMARKED = HexValue(*v);
        if (auto v = Value(text, upper, "COLOR_BGNORMAL=0X")) st_.COLOR_BGNORMAL = HexValue(*v);
        if (auto v = Value(text, upper, "COLOR_FGVALID=0X")) st_.COLOR_FGVALID = HexValue(*v);
        // The invalid colour's key is compared over 18 characters with a key
        // of 17, so it never matches and the colour keeps its default.
        if (upper.substr(0, 18) == "COLOR_FGMARKED=0X")
            st_.COLOR_FGINVALID = HexValue(upper.substr(17));
        if (auto v = Value(text, upper, "COLOR_FGMONITOR=0X")) st_.COLOR_FGMONITOR = HexValue(*v);
        if (auto v = Value(text, upper, "LOGFILE=")) st_.logEnabled = config::Val(*v);
        if (auto v = Value(text, upper, "REFRESHSFR="))
            st_.REFRESHSFR = static_cast<int16_t>(config::Val(*v));
        if (auto v = Value(text, upper, "SCALEFACTOR="))
            st_.SCALEFACTOR = static_cast<int16_t>(config::Val(*v));
        if (auto n = Indexed(upper, "SFRSET", 7, -1))
            st_.sfrSets[*n].title = text.substr(text.find('=') + 1);
        auto display = [&](int set, std::string_view name) {
            const int32_t i = SfrIndexByName(st_, name);
            if (i >= 0) AddSfrToSet(st_, set, i);
        };
        if (auto n = Indexed(upper, "DISPLAY", 7, -1)) display(*n, text.substr(text.find('=') + 1));
        if (auto v = Value(text, upper, "DISPLAY=")) display(0, *v);
    }

    ProgramState& st_;
    config::MemoryUnitReader memory_;
    int section_ = 0;
    bool oldKeys_ = false;
    std::string oldMonitor_;
    std::string oldMonitorKline_;
};

}  // namespace

void SetDefaultPreferences(ProgramState& st) {
    st.CurrentKernel = 0;
    st.IDLENGTH = 1;
    st.TRANSFERBUFFERSTARTADDRESS = 0xFC80;
    st.PORT = 1;
    st.PORTNAME.clear();
    st.BAUDRATE = 9600;
    st.PARITY = 0;
    st.DATA = 8;
    st.STOPBITS = 1;
    st.TIMEOUT = 2000;
    st.CONNECTTIMEOUT = 100;
    st.CONNECTRETRY = 10;
    st.KLINE = 0;
    st.TMODE = 0;
    st.INITCHAR = 0;
    st.COMPORTS = 16;
    st.CHECKCONNECTION = 1;
    st.MCTYPE = "ALD7RK_BB";
    st.CLK = 20000000;
    st.EINIT = 0;
    SetProgramFolderDefaults(st);  // paths, and drive, folder and type of the file memos
    for (int i = 0; i <= 9; ++i) {
        st.LoadFileMemos[i].name.clear();
        st.SaveFileMemos[i].name.clear();
    }
    st.saveFile = FileMemo{"C", "C:", "test.hex", 0};
    st.SAVEFORMAT = 20;
    st.SAVERECORDSIZE = 32;
    st.SAVEFILETYPE = 0;
    st.SAVESTARTADDR = 0;
    st.SAVEENDADDR = 65535;
    st.saveAddressesFromPreferences = 0;
    for (auto& s : st.lastScriptFiles) s.clear();
    for (auto& u : st.userScripts) u = UserScript{};
    st.codes = MessageCodes{};
    st.logEnabled = 0;
    st.logFileName = "LOG.TXT";
    st.BLANK_CHAR = ".";
    st.COLOR_BGMARKED = 0xDDDDDD;
    st.COLOR_BGNORMAL = 0xFFFFFF;
    st.COLOR_FGVALID = 0x000000;
    st.COLOR_FGINVALID = 0x0000FF;
    st.COLOR_FGMONITOR = 0x007777;
    st.REFRESHSFR = kTrue;
    st.SCALEFACTOR = 100;
    st.host->refreshSfrView();
}

void ReadPreferences(ProgramState& st, std::string_view path) {
    SetDefaultPreferences(st);
    auto lines = config::ReadLines(st, path);
    if (!lines) {
        config::ReportMissingFile(st, path);
        return;
    }
    st.memoryUnitCount = -1;
    st.initRegisterCount = 0;
    ClearSfrSets(st);
    PreferenceReader reader(st);
    try {
        for (const std::string& l : *lines) reader.line(l);
    } catch (...) {
        reader.finish();
        throw;
    }
    reader.finish();
    // New units and register sets: the register view is redrawn whatever
    // REFRESHSFR says.
    st.host->refreshAfterOperation(true);
}

namespace {

// The preference file's lines as they are made: add(line) appends the line and
// its line feed.
struct Lines {
    std::string text;
    void operator()(const std::string& line) { text += line + "\n"; }
};

std::string num(long long v) {
    return std::to_string(v);
}

void AddVortelmSection(Lines& add, const ProgramState& st) {
    add("[Vortelm]");
    add("IDLENGTH=" + num(st.IDLENGTH));
    add("KERNEL=" + st.kernels[st.CurrentKernel].name);
    add("TRANSFERBUFFERSTARTADDRESS=" + HexText(st.TRANSFERBUFFERSTARTADDRESS, 6));
    add("");
}

void AddCommunicationSection(Lines& add, const ProgramState& st) {
    add("[Communication]");
    add("PORT=COM" + num(st.PORT));
    add("BAUDRATE=" + num(st.BAUDRATE));
    add("PARITY=" + num(st.PARITY));
    add("DATA=" + num(st.DATA));
    add("STOPBITS=" + num(st.STOPBITS));
    add("TIMEOUT=" + num(st.TIMEOUT));
    add("KLINE=" + num(st.KLINE));
    add("TMODE=" + num(st.TMODE));
    add("CONNECTTIMEOUT=" + num(st.CONNECTTIMEOUT));
    add("CONNECTRETRY=" + num(st.CONNECTRETRY));
    add("CHECKCONNECTION=" + num(st.CHECKCONNECTION));
    add("INITCHAR=" + num(st.INITCHAR));
    add("COMPORTS=" + num(st.COMPORTS));
    add("PORTNAME=" + QuotePath(st.PORTNAME));
    add("");
}

void AddControllerSection(Lines& add, const ProgramState& st) {
    add("[Controller]");
    add("MCTYPE=" + st.MCTYPE);
    add("CLK=" + num(st.CLK));
    add("");
    add("");
}

// One memory unit's keys, from NAME= on.
void AddMemoryUnit(Lines& add, const MemoryUnit& m) {
    add("NAME=" + m.name);
    add("TYPE=" + m.type);
    add("BLANK=0x" + HexText(m.blank, 2));
    add("BURSTSIZE=0x" + HexText(m.burstSize, 4));
    add("ERASESIZE=0x" + HexText(m.eraseSize, 4));
    if (m.activated == kTrue) add("ACTIVATED");
    for (int i = 0; i < m.activateCount && i <= 5; ++i) {
        add("ACTIVATEREGISTER(" + num(i) + ")=" + m.activateRegisters[i]);
        add("ACTIVATEMASK(" + num(i) + ")=0x" + HexText(m.activateMasks[i], 4));
    }
    for (int s = 0; s < m.sectionCount && s <= 128; ++s) {
        const MemorySection& sec = m.sections[s];
        for (int r = 0; r < sec.rangeCount && r <= 4; ++r) {
            const SectionRange& range = sec.ranges[r];
            const std::string at = "SECTION(" + num(s) + ").";
            const std::string j = "(" + num(r) + ")";
            add(at + "STARTADDRESS" + j + "=0x" + HexText(range.startAddress, 6));
            add(at + "LENGTH" + j + "=0x" + HexText(range.length, 6));
            if (range.mappingDefined == kTrue && range.mappedNow == kTrue) add(at + "MAPPED" + j);
            if (range.mappingDefined == kTrue) {
                add(at + "MAPADDRESS" + j + "=0x" + HexText(range.mapAddress, 6));
                add(at + "MAPREGISTER" + j + "=" + range.mapRegister);
                add(at + "MAPMASK" + j + "=0x" + HexText(range.mapMask, 4));
            }
        }
    }
    if (!m.driverPath.empty()) {
        add("DRIVER.PATH=" + QuotePath(m.driverPath));
        add("DRIVER.BUFFERADDRESS=" + HexText(m.driverBufferAddress, 6));
        add("DRIVER.MODE=" + num(m.driverMode));
    }
    if (m.featureCount > 0) {
        std::string f = "DRIVER.FEATURES=";
        for (int i = 0; i < m.featureCount && i <= 20; ++i) f += (i ? "," : "") + m.features[i];
        add(f);
    }
    for (int i = 0; i < m.statusRegisterCount && i <= 20; ++i) {
        const StatusRegister& reg = m.statusRegisters[i];
        if (!reg.name.empty()) add("STATUS(" + num(i) + ")=" + reg.name);
        for (int b = 0; b <= 15; ++b) {
            const StatusBit& bit = reg.bits[b];
            if (bit.value <= 0) continue;
            add("STATUS(" + num(i) + ").BIT(" + num(b) + ")=" + bit.text +
                (bit.value > 1 ? "," + num(bit.value) : ""));
        }
    }
}

void AddMemorySection(Lines& add, const ProgramState& st) {
    add("[Memory]");
    add("");
    for (int u = 0; u < st.memoryUnitCount && u <= kMemoryUnitBound; ++u) {
        AddMemoryUnit(add, st.memoryUnits[u]);
        add("");
    }
    add("");
}

void AddRegisterSection(Lines& add, const ProgramState& st) {
    add("[Register]");
    add("");
    for (int i = 0; i < st.initRegisterCount && i <= kInitRegisterBound; ++i) {
        const InitRegister& r = st.initRegisters[i];
        std::string l = r.name + "=0x" + HexText(r.value, 4);
        if (r.name.rfind("GENERIC", 0) == 0) l += ",0x" + HexText(config::Val(r.address), 6);
        add(l);
    }
    add("");
}

void AddCommandsSection(Lines& add, const ProgramState& st) {
    add("[Commands]");
    add("");
    if (st.EINIT == 1) add("EINIT");
    add("");
    add("");
}

void AddFilesSection(Lines& add, const ProgramState& st) {
    add("[Files]");
    add("SAVEFILE=" + MemoPath(st.saveFile));
    add("SAVEFORMAT=" + num(st.SAVEFORMAT));
    add("SAVEFILETYPE=" + num(st.SAVEFILETYPE));
    add("SAVERECORDSIZE=" + num(st.SAVERECORDSIZE));
    add("");
    if (st.saveAddressesFromPreferences == 1) {
        add("SAVESTARTADDR=0x" + HexText(st.SAVESTARTADDR, 6));
        add("SAVEENDADDR=0x" + HexText(st.SAVEENDADDR, 6));
        add("");
    }
    for (const FileKey& k : kFileKeys) {
        const FileMemo& memo = k.save ? st.SaveFileMemos[k.entry] : st.LoadFileMemos[k.entry];
        add(k.key + MemoPath(memo));
        add(k.typeKey + num(memo.type));
        // CONFIGLOADFILE to CONFIGSAVEFILETYPE form one group
        if (std::string_view(k.key) != "CONFIGLOADFILE=") add("");
    }
    for (int n = 0; n < 16; ++n)
        add("LASTSCRIPTFILE(" + num(n) + ")=" + QuotePath(st.lastScriptFiles[n]));
    add("");
    for (int n = 0; n < 8; ++n) {
        add("USERSCRIPT(" + num(n) + ")=" + QuotePath(st.userScripts[n].path));
        add("USERSCRIPTNAME(" + num(n) + ")=" + st.userScripts[n].name);
    }
    add("");
    add("PATH_LOAD=" + QuotePath(st.PATH_LOAD));
    add("PATH_SAVE=" + QuotePath(st.PATH_SAVE));
    add("PATH_SCRIPT=" + QuotePath(st.PATH_SCRIPT));
    add("PATH_LOG=" + QuotePath(st.PATH_LOG));
    add("");
}

void AddMessagesSection(Lines& add, const ProgramState& st) {
    add("[Messages]");
    add("");
    for (size_t i = 0; i < kCodeKeys.size(); ++i) {
        add(kCodeKeys[i].key + HexText(st.codes.*kCodeKeys[i].field, 2));
        if (i == 1 || i == 11) add("");
    }
    add("");
    add("");
}

void AddFrontendSection(Lines& add, const ProgramState& st) {
    add("[Frontend]");
    add("");
    add("BLANK_CHAR=" + st.BLANK_CHAR);
    add("COLOR_BGMARKED=0x" + HexText(st.COLOR_BGMARKED, 6));
    add("COLOR_BGNORMAL=0x" + HexText(st.COLOR_BGNORMAL, 6));
    add("COLOR_FGVALID=0x" + HexText(st.COLOR_FGVALID, 6));
    add("COLOR_FGINVALID=0x" + HexText(st.COLOR_FGINVALID, 6));
    add("COLOR_FGMONITOR=0x" + HexText(st.COLOR_FGMONITOR, 6));
    add("LOGFILE=" + num(st.logEnabled));
    add("REFRESHSFR=" + num(st.REFRESHSFR));
    add("SCALEFACTOR=" + num(st.SCALEFACTOR));
    add("");
    const int sets = std::min<int>(st.sfrSetCount, kSfrSetBound + 1);
    for (int n = 0; n < sets; ++n) add("SFRSET(" + num(n) + ")=" + st.sfrSets[n].title);
    for (int n = 0; n < sets; ++n)
        for (int j = 0; j < st.sfrSets[n].count && j < 256; ++j)
            add("DISPLAY(" + num(n) + ")=" + st.sfrSets[n].names[j]);
    add("");
}

}  // namespace

std::string PreferencesText(const ProgramState& st) {
    CheckBound(st.CurrentKernel, kKernelBound, "kernel");
    Lines add;
    AddVortelmSection(add, st);
    AddCommunicationSection(add, st);
    AddControllerSection(add, st);
    AddMemorySection(add, st);
    AddRegisterSection(add, st);
    AddCommandsSection(add, st);
    AddFilesSection(add, st);
    AddMessagesSection(add, st);
    AddFrontendSection(add, st);
    return add.text;
}

bool WritePreferences(const ProgramState& st, std::string_view path) {
    return config::WriteFileAtomically(st, path, PreferencesText(st));
}

}  // namespace vortelm
