// The delivered data files and the board models must agree. The files are
// read here with small readers of their own, not with the host's.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>

#include "Client.h"
#include "sim/Images.h"
#include "sim/Model.h"

namespace {

using namespace vortelm::sim;

std::vector<std::string> Lines(const std::string& path) {
    std::vector<std::string> out;
    std::istringstream in(simtest::ReadFile(path));
    std::string l;
    while (std::getline(in, l)) {
        if (!l.empty() && l.back() == '\r') l.pop_back();
        out.push_back(l);
    }
    return out;
}

std::string Path(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '/');
    return simtest::DataDir() + "/" + name;
}

uint32_t Hex(const std::string& s) {
    return static_cast<uint32_t>(std::stoul(s, nullptr, 16));
}

struct Controller {
    std::string family, regdef, memdef, kernel, klineKernel;
    std::vector<uint32_t> ids;
};

std::map<std::string, Controller> ReadMctypes() {
    std::map<std::string, Controller> out;
    std::string cur;
    for (const auto& l : Lines(simtest::DataDir() + "/mctypes.dat")) {
        if (l.empty() || l[0] == ';') continue;
        if (l[0] == '[') {
            cur = l.substr(1, l.find(']') - 1);
            out[cur];
            continue;
        }
        const auto eq = l.find('=');
        const std::string k = l.substr(0, eq), v = l.substr(eq + 1);
        auto& c = out[cur];
        if (k == "FAMILY") c.family = v;
        if (k == "REGDEF") c.regdef = v;
        if (k == "MEMDEF") c.memdef = v;
        if (k == "DEFAULT_KERNEL") c.kernel = v;
        if (k == "DEFAULT_KERNEL_KLINE") c.klineKernel = v;
        if (k == "ID") {
            std::istringstream ids(v);
            std::string one;
            while (std::getline(ids, one, ',')) c.ids.push_back(Hex(one.substr(2)));
        }
    }
    return out;
}

struct KernelRec {
    std::string loader, core, features;
    bool ack = true;
    uint32_t start = 0, end = 0;
};

std::map<std::string, KernelRec> ReadKernels() {
    std::map<int, std::map<std::string, std::string>> raw;
    for (const auto& l : Lines(simtest::DataDir() + "/kernel.dat")) {
        const auto open = l.find('('), close = l.find(')'), eq = l.find('=');
        if (open == std::string::npos || eq == std::string::npos) continue;
        raw[std::stoi(l.substr(open + 1, close - open - 1))][l.substr(0, open)] = l.substr(eq + 1);
    }
    std::map<std::string, KernelRec> out;
    for (auto& [n, f] : raw) {
        KernelRec k;
        k.loader = f["LOADERPATH"];
        k.core = f["VORTELMPATH"];
        k.features = f["FEATURES"];
        k.ack = f["LOADERACK"] != "FALSE";
        k.start = Hex(f["STARTADDRESS"]);
        k.end = Hex(f["ENDADDRESS"]);
        out[f["KERNELNAME"]] = k;
    }
    return out;
}

struct MemUnit {
    std::string name;
    std::map<std::string, std::string> keys;
    std::map<int, std::map<int, std::pair<uint32_t, uint32_t>>> sections;  // start, length
    int statusCount = 0;
};

std::vector<MemUnit> ReadMem(const std::string& path) {
    std::vector<MemUnit> out;
    for (const auto& l : Lines(path)) {
        if (l.empty()) continue;
        if (l[0] == '[') {
            out.push_back({l.substr(1, l.find(']') - 1), {}, {}, 0});
            continue;
        }
        const auto eq = l.find('=');
        const std::string k = l.substr(0, eq), v = l.substr(eq + 1);
        auto& u = out.back();
        if (k.rfind("SECTION(", 0) == 0) {
            const int i = std::stoi(k.substr(8));
            const int j = std::stoi(k.substr(k.rfind('(') + 1));
            if (k.find("STARTADDRESS") != std::string::npos)
                u.sections[i][j].first = Hex(v.substr(2));
            if (k.find("LENGTH") != std::string::npos) u.sections[i][j].second = Hex(v.substr(2));
        } else if (k.rfind("STATUS(", 0) == 0 && k.find("BIT") == std::string::npos) {
            u.statusCount = std::max(u.statusCount, std::stoi(k.substr(7)) + 1);
        }
        u.keys[k] = v;
    }
    return out;
}

std::map<std::string, uint32_t> ReadSfr(const std::string& path) {
    std::map<std::string, uint32_t> out;
    for (auto l : Lines(path)) {
        l = l.substr(0, l.find(';'));
        if (l.rfind("SFR ", 0) != 0) continue;
        std::istringstream in(l);
        std::string kw, addr, name;
        in >> kw >> addr >> name;
        out[name] = Hex(addr.substr(2));
    }
    return out;
}

bool InRam(const BoardModel& m, uint32_t first, uint32_t last) {
    return std::any_of(m.ram.begin(), m.ram.end(),
                       [&](const Area& a) { return first >= a.first && last <= a.last; });
}

}  // namespace

TEST(Data, DeliveredImagesEqualTheGeneratorsOutput) {
    for (const auto& image : DeliveredImages()) {
        EXPECT_EQ(simtest::ReadFile(simtest::DataDir() + "/" + image.file),
                  ToIntelHex(image.address, image.bytes))
            << image.file << ": run vortelm-sim-images data";
    }
}

TEST(Data, TheImageProgramWritesTheDeliveredFiles) {
    const std::string dir = std::string(VORTELM_BINARY_DIR) + "/sim-images-test";
    std::filesystem::remove_all(dir);
    const std::string cmd = std::string(VORTELM_SIM_IMAGES) + " " + dir + " > /dev/null";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    std::size_t files = 0;
    for (const auto& e : std::filesystem::recursive_directory_iterator(dir)) {
        if (!e.is_regular_file()) continue;
        ++files;
        const std::string rel = std::filesystem::relative(e.path(), dir).string();
        EXPECT_EQ(simtest::ReadFile(e.path().string()),
                  simtest::ReadFile(simtest::DataDir() + "/" + rel))
            << rel;
    }
    EXPECT_EQ(files, DeliveredImages().size());
}

TEST(Data, ControllersMatchTheBoardModels) {
    const auto controllers = ReadMctypes();
    ASSERT_TRUE(controllers.count("ALD7RK_BB"));
    std::set<std::string> families;
    const auto kernels = ReadKernels();
    for (const auto& [name, c] : controllers) {
        const BoardModel* m = FindBoardModel(name);
        ASSERT_TRUE(m) << name;
        const char* fam[] = {"ALD4", "ZT", "ZT7"};
        EXPECT_EQ(c.family, fam[static_cast<int>(m->family)]) << name;
        families.insert(c.family);
        ASSERT_FALSE(c.ids.empty()) << name;
        EXPECT_EQ(c.ids[0], m->idByte) << name;
        EXPECT_TRUE(std::filesystem::exists(Path(c.regdef))) << c.regdef;
        EXPECT_TRUE(std::filesystem::exists(Path(c.memdef))) << c.memdef;
        for (const auto& k : {c.kernel, c.klineKernel}) {
            ASSERT_TRUE(kernels.count(k)) << k;
            const auto& kr = kernels.at(k);
            EXPECT_TRUE(InRam(*m, kr.start, kr.end)) << k;
            // the running core must leave the driver buffer and the register bank alone
            EXPECT_TRUE(kr.end < 0xFC00 || kr.start > 0xFD00) << k;
        }
    }
    EXPECT_EQ(families, (std::set<std::string>{"ALD4", "ZT", "ZT7"}));
}

TEST(Data, KernelsMatchTheirImages) {
    const auto kernels = ReadKernels();
    for (const char* n : {"ALD4_DEFAULT", "ALD4_KLINE", "ZTA9Y_DEFAULT", "ZTA9Y_KLINE",
                          "ZT7000_DEFAULT", "ZT7000_KLINE"})
        EXPECT_TRUE(kernels.count(n)) << n;
    bool small = false;
    for (const auto& [name, k] : kernels) {
        const auto loader = simtest::Flatten(simtest::ReadHex(Path(k.loader)));
        ASSERT_EQ(loader.size(), kLoaderSize) << name;
        const bool kline = name.find("KLINE") != std::string::npos;
        EXPECT_EQ(loader[4] | (loader[5] << 8),
                  static_cast<int>((kline ? k.start - 1 : k.start) & 0xFFFF))
            << name;
        EXPECT_EQ(loader[6] | (loader[7] << 8), static_cast<int>(k.end & 0xFFFF)) << name;
        EXPECT_EQ((loader[8] & kLoaderFlagAck) != 0, k.ack) << name;
        // the relocation patch finds exactly the words it should
        for (std::size_t a = 0; a + 1 < loader.size(); ++a) {
            const uint32_t w = loader[a] | (loader[a + 1] << 8);
            const bool expected = a == 4 || a == 6;
            if (!expected) {
                EXPECT_NE(w, k.start & 0xFFFF) << name << " at " << a;
                EXPECT_NE(w, k.end & 0xFFFF) << name << " at " << a;
                EXPECT_NE(w, (k.start - 1) & 0xFFFF) << name << " at " << a;
            }
        }
        const auto coreMap = simtest::ReadHex(Path(k.core));
        EXPECT_EQ(coreMap.begin()->first, k.start) << name;
        EXPECT_EQ(coreMap.rbegin()->first, k.end) << name;
        const auto core = simtest::Flatten(coreMap);
        EXPECT_EQ(std::string(core.begin() + 2, core.begin() + 6), "VtCr") << name;
        EXPECT_EQ(core[6] | (core[7] << 8), FeatureMask(k.features)) << name;
        EXPECT_EQ(static_cast<uint32_t>(core[8] | (core[9] << 8)), k.end - k.start + 1) << name;
        small = small || k.features.find("READWORD") == std::string::npos;
    }
    EXPECT_TRUE(small) << "one kernel without READWORD";
}

TEST(Data, MemoryUnitsMatchTheBoardsAndTheirDrivers) {
    const auto controllers = ReadMctypes();
    bool erasewl = false, mode0 = false, mode1 = false, activation = false, mapped = false;
    for (const auto& [name, c] : controllers) {
        const BoardModel* m = FindBoardModel(name);
        ASSERT_TRUE(m);
        const auto sfr = ReadSfr(Path(c.regdef));
        for (const auto& u : ReadMem(Path(c.memdef))) {
            const std::string type = u.keys.at("TYPE");
            if (type.find("FLASH") == std::string::npos) {
                for (const auto& [i, ranges] : u.sections)
                    for (const auto& [j, r] : ranges)
                        EXPECT_TRUE(InRam(*m, r.first, r.first + r.second - 1))
                            << name << " " << u.name;
                continue;
            }
            ASSERT_TRUE(u.keys.count("DRIVER.PATH")) << u.name;
            const auto drvMap = simtest::ReadHex(Path(u.keys.at("DRIVER.PATH")));
            const auto d = simtest::Flatten(drvMap);
            ASSERT_GE(d.size(), kDriverHeaderSize);
            EXPECT_EQ(std::string(d.begin(), d.begin() + 4), "VtDr");
            EXPECT_TRUE(InRam(*m, drvMap.begin()->first, drvMap.rbegin()->first)) << u.name;
            const int mode = std::stoi(u.keys.at("DRIVER.MODE"), nullptr, 16);
            EXPECT_EQ(d[4], mode) << u.name;
            (mode == 0 ? mode0 : mode1) = true;
            ASSERT_LT(d[5], m->flash.size());
            const FlashUnitDef& f = m->flash[d[5]];
            EXPECT_EQ(f.name, u.name);
            EXPECT_EQ(f.internal, type == "IFLASH") << u.name;
            EXPECT_EQ(d[6] | (d[7] << 8), static_cast<int>(Hex(u.keys.at("BURSTSIZE").substr(2))))
                << u.name;
            EXPECT_EQ(d[8], Hex(u.keys.at("BLANK").substr(2))) << u.name;
            EXPECT_EQ(d[8], f.blank) << u.name;
            EXPECT_EQ(d[9], u.statusCount) << u.name;
            const uint32_t buffer = d[10] | (d[11] << 8) | (uint32_t(d[12] | (d[13] << 8)) << 16);
            EXPECT_EQ(buffer, Hex(u.keys.at("DRIVER.BUFFERADDRESS"))) << u.name;
            EXPECT_TRUE(InRam(*m, buffer, buffer + 0x7F)) << u.name;
            const std::string features = u.keys.at("DRIVER.FEATURES");
            if (features.find("ERASEWL") != std::string::npos) {
                erasewl = true;
                EXPECT_EQ(mode, 0) << "wordlines are erased by mode-0 drivers";
                const uint32_t wl = d[14] | (d[15] << 8) | (uint32_t(d[16] | (d[17] << 8)) << 16);
                EXPECT_EQ(wl, Hex(u.keys.at("ERASESIZE").substr(2))) << u.name;
            }
            ASSERT_EQ(u.sections.size(), f.sections.size()) << u.name;
            for (const auto& [i, ranges] : u.sections) {
                ASSERT_EQ(ranges.size(), f.sections[static_cast<std::size_t>(i)].size())
                    << u.name << " " << i;
                for (const auto& [j, r] : ranges) {
                    const Area& a =
                        f.sections[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
                    EXPECT_EQ(r.first, a.first) << u.name << " " << i << "/" << j;
                    EXPECT_EQ(r.first + r.second - 1, a.last) << u.name << " " << i << "/" << j;
                }
            }
            for (int i = 0; i < 6; ++i) {
                const std::string key = "ACTIVATEREGISTER(" + std::to_string(i) + ")";
                if (!u.keys.count(key)) continue;
                activation = true;
                const std::string reg = u.keys.at(key);
                ASSERT_TRUE(sfr.count(reg)) << reg;
                const uint32_t mask =
                    Hex(u.keys.at("ACTIVATEMASK(" + std::to_string(i) + ")").substr(2));
                ASSERT_LT(static_cast<std::size_t>(i), f.activation.size());
                EXPECT_EQ(f.activation[static_cast<std::size_t>(i)].registerAddress, sfr.at(reg));
                EXPECT_EQ(f.activation[static_cast<std::size_t>(i)].mask, mask);
            }
            if (u.keys.count("SECTION(0).MAPADDRESS(0)")) {
                mapped = true;
                ASSERT_EQ(f.windows.size(), 1u);
                EXPECT_EQ(f.windows[0].mapAddress,
                          Hex(u.keys.at("SECTION(0).MAPADDRESS(0)").substr(2)));
                EXPECT_EQ(f.windows[0].when.registerAddress,
                          sfr.at(u.keys.at("SECTION(0).MAPREGISTER(0)")));
                EXPECT_EQ(f.windows[0].when.mask,
                          Hex(u.keys.at("SECTION(0).MAPMASK(0)").substr(2)));
            }
        }
    }
    EXPECT_TRUE(erasewl && mode0 && mode1 && activation && mapped);
}

TEST(Data, RegisterFilesNameEveryBoardRegister) {
    for (const auto& [name, c] : ReadMctypes()) {
        const BoardModel* m = FindBoardModel(name);
        ASSERT_TRUE(m);
        const auto sfr = ReadSfr(Path(c.regdef));
        for (const auto& r : m->registers) {
            ASSERT_TRUE(sfr.count(r.name)) << name << " " << r.name;
            EXPECT_EQ(sfr.at(r.name), r.address) << name << " " << r.name;
        }
        EXPECT_EQ(sfr.size(), m->registers.size()) << name;
        for (const char* must :
             {"SYSCON", "BUSCON0", "CP", "SP", "PSW", "DPP0", "DPP1", "DPP2", "DPP3", "PLLCON",
              "RSTCON", "IDMANUF", "IDCHIP", "IDMEM", "IDPROG", "IDMEM2"})
            EXPECT_TRUE(sfr.count(must)) << name << " " << must;
    }
    const auto ald = ReadSfr(simtest::DataDir() + "/SFRDEF/LD7RK.SFR");
    for (const char* must : {"S0CON", "S0BG"}) EXPECT_TRUE(ald.count(must)) << must;
    const auto zt = ReadSfr(simtest::DataDir() + "/SFRDEF/ZTA9Y.SFR");
    for (const char* must :
         {"ASC0FDV", "ASC0BG", "RSTCFG", "SYSSTAT", "FCONCS0", "TSTMOD", "RSTCON2"})
        EXPECT_TRUE(zt.count(must)) << must;
    const auto zt7 = ReadSfr(simtest::DataDir() + "/SFRDEF/ZT7000.SFR");
    EXPECT_EQ(zt7.at("FDRL"), 0x204004u);
    EXPECT_EQ(zt7.at("BRGL"), 0x20401Cu);
    EXPECT_EQ(zt7.at("BRGH"), 0x20401Eu);
    // bit fields exist and follow their register
    const auto text = simtest::ReadFile(simtest::DataDir() + "/SFRDEF/LD7RK.SFR");
    EXPECT_NE(text.find("BIT S0CON.13 S0BRS"), std::string::npos);
    EXPECT_LT(text.find("SFR 0xFF12 SYSCON"), text.find("BIT SYSCON.2 XPEN"));
}

TEST(Data, DefaultPreferencesOpenTheVirtualBoard) {
    const auto l = Lines(simtest::DataDir() + "/default.ini");
    const auto at = [&](const std::string& s) {
        return std::find(l.begin(), l.end(), s) - l.begin();
    };
    EXPECT_EQ(at("PORTNAME=sim:"), at("COMPORTS=16") + 1);
    EXPECT_LT(at("MCTYPE=ALD7RK_BB"), static_cast<long>(l.size()));
    EXPECT_LT(at("KERNEL=ALD4_DEFAULT"), at("KLINE=0"));
    const std::vector<std::string> order = {"[Vortelm]", "[Communication]", "[Controller]",
                                            "[Memory]",  "[Register]",      "[Commands]",
                                            "[Files]",   "[Messages]",      "[Frontend]"};
    for (std::size_t i = 1; i < order.size(); ++i) EXPECT_LT(at(order[i - 1]), at(order[i]));
    EXPECT_EQ(l[static_cast<std::size_t>(at("[Files]")) + 1], "SAVEFILE=");
}

TEST(Data, SampleImageLiesInTheDefaultBoardsRam) {
    const auto m = simtest::ReadHex(simtest::DataDir() + "/SCRIPTS/SAMPLE.HEX");
    ASSERT_FALSE(m.empty());
    EXPECT_TRUE(InRam(*FindBoardModel("ALD7RK_BB"), m.begin()->first, m.rbegin()->first));
    simtest::Client c;
    ASSERT_TRUE(c.bootDefault());
    c.download("SCRIPTS/SAMPLE.HEX");
    auto back = c.readBlock(m.begin()->first, static_cast<uint16_t>(m.size()));
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, simtest::Flatten(m));
}
