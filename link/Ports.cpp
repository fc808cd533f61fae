#include "link/Ports.h"

#include <dirent.h>
#include <grp.h>
#include <libserialport.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "link/SerialChannel.h"
#include "link/TcpChannel.h"

namespace vortelm::link {

namespace {

bool StartsWithNoCase(std::string_view text, std::string_view head) {
    if (text.size() < head.size()) return false;
    for (std::size_t i = 0; i < head.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(text[i])) !=
            std::toupper(static_cast<unsigned char>(head[i])))
            return false;
    return true;
}

// "COM<n>" with n a decimal number of 1 upward: n, else 0.
int ComNumber(std::string_view text) {
    if (!StartsWithNoCase(text, "COM") || text.size() == 3 || text.size() > 8) return 0;
    int n = 0;
    for (char c : text.substr(3)) {
        if (c < '0' || c > '9') return 0;
        n = n * 10 + (c - '0');
    }
    return n;
}

std::string RealPath(std::string_view path) {
    char real[PATH_MAX];
    std::string p(path);
    if (!realpath(p.c_str(), real)) return p;
    return real;
}

std::string ModeText(mode_t m) {
    std::string s;
    s += S_ISCHR(m) ? 'c' : S_ISBLK(m) ? 'b' : S_ISDIR(m) ? 'd' : S_ISLNK(m) ? 'l' : '-';
    const char* rwx = "rwxrwxrwx";
    for (int i = 0; i < 9; ++i) s += (m & (0400 >> i)) ? rwx[i] : '-';
    return s;
}

std::string UserName(uid_t uid) {
    if (const passwd* p = getpwuid(uid)) return p->pw_name;
    return std::to_string(uid);
}

std::string GroupName(gid_t gid) {
    if (const group* g = getgrgid(gid)) return g->gr_name;
    return std::to_string(gid);
}

}  // namespace

std::string ComDevicePath(int n) {
    return "/dev/ttyS" + std::to_string(n - 1);
}

std::string PortTextOf(const ProgramState& st) {
    if (!st.portOverride.empty()) return st.portOverride;
    if (!st.PORTNAME.empty()) return st.PORTNAME;
    return ComDevicePath(st.PORT);
}

std::string PortDevice(std::string_view portText) {
    if (int n = ComNumber(portText); n > 0) return ComDevicePath(n);
    return std::string(portText);
}

bool ParseSettingsText(std::string_view text, channel::LineSettings& out) {
    std::string parts[4];
    int k = 0;
    for (char c : text) {
        if (c == ',') {
            if (++k > 3) return false;
        } else if (c != ' ') {
            parts[k] += c;
        }
    }
    if (k != 3) return false;
    channel::LineSettings ls;
    if (parts[0].empty() || parts[0].size() > 9) return false;
    uint32_t baud = 0;
    for (char c : parts[0]) {
        if (c < '0' || c > '9') return false;
        baud = baud * 10 + uint32_t(c - '0');
    }
    if (baud == 0) return false;
    ls.baud = baud;
    const std::string p = UpperCase(parts[1]);
    if (p == "N")
        ls.parity = channel::Parity::None;
    else if (p == "O")
        ls.parity = channel::Parity::Odd;
    else if (p == "E")
        ls.parity = channel::Parity::Even;
    else
        return false;
    if (parts[2] != "5" && parts[2] != "6" && parts[2] != "7" && parts[2] != "8") return false;
    ls.dataBits = uint8_t(parts[2][0] - '0');
    if (parts[3] != "1" && parts[3] != "2") return false;
    ls.stopBits = uint8_t(parts[3][0] - '0');
    out = ls;
    return true;
}

ChannelOpeners::ChannelOpeners() {
    add("socket://", [](const OpenRequest& q) {
        OpenResult r;
        r.path = std::string(q.portText);
        r.channel = TcpChannel::connect(q.rest, q.timeoutMs, r.err, r.error);
        return r;
    });
    add("sim:", [](const OpenRequest& q) {
        OpenResult r;
        r.path = std::string(q.portText);
        r.err = ENODEV;
        r.error = "the virtual board is not part of this build";
        return r;
    });
}

void ChannelOpeners::add(std::string_view prefix, ChannelOpener opener) {
    for (auto& [p, o] : openers_) {
        if (p.size() == prefix.size() && StartsWithNoCase(p, prefix)) {
            o = std::move(opener);
            return;
        }
    }
    openers_.emplace_back(std::string(prefix), std::move(opener));
}

const ChannelOpener* ChannelOpeners::find(std::string_view portText, std::string_view* rest) const {
    for (const auto& [p, o] : openers_) {
        if (!StartsWithNoCase(portText, p)) continue;
        if (rest) *rest = portText.substr(p.size());
        return &o;
    }
    return nullptr;
}

OpenResult ChannelOpeners::open(std::string_view portText, const channel::LineSettings& settings,
                                int32_t timeoutMs, std::string_view controller,
                                channel::MicrosClock clock) const {
    std::string_view rest;
    if (const ChannelOpener* o = find(portText, &rest))
        return (*o)(OpenRequest{portText, rest, settings, timeoutMs, controller, std::move(clock)});
    OpenResult r;
    r.path = PortDevice(portText);
    r.channel = SerialChannel::open(r.path, settings, r.err, r.error);
    return r;
}

std::vector<PortInfo> ListPorts() {
    std::vector<PortInfo> out;
    std::map<std::string, std::string> byId;  // real path -> by-id name
    if (DIR* d = opendir("/dev/serial/by-id")) {
        while (dirent* e = readdir(d)) {
            if (e->d_name[0] == '.') continue;
            std::string link = std::string("/dev/serial/by-id/") + e->d_name;
            byId[RealPath(link)] = link;
        }
        closedir(d);
    }
    sp_port** ports = nullptr;
    if (sp_list_ports(&ports) == SP_OK && ports) {
        for (int i = 0; ports[i]; ++i) {
            PortInfo p;
            const char* name = sp_get_port_name(ports[i]);
            if (!name) continue;
            p.path = name;
            if (sp_get_port_transport(ports[i]) == SP_TRANSPORT_USB) {
                int vid = 0;
                int pid = 0;
                if (sp_get_port_usb_vid_pid(ports[i], &vid, &pid) == SP_OK)
                    p.description = "USB " + HexText(vid, 4) + ":" + HexText(pid, 4);
                if (const char* prod = sp_get_port_usb_product(ports[i]))
                    p.description += std::string(" ") + prod;
                if (const char* sn = sp_get_port_usb_serial(ports[i]))
                    p.description += std::string(" ") + sn;
            } else if (const char* desc = sp_get_port_description(ports[i])) {
                p.description = desc;
            }
            if (auto it = byId.find(RealPath(p.path)); it != byId.end()) p.byId = it->second;
            out.push_back(std::move(p));
        }
        sp_free_port_list(ports);
    }
    out.push_back({"sim:", "virtual board in process", ""});
    return out;
}

std::string PortLine(const PortInfo& p) {
    std::string s = p.path;
    if (!p.description.empty()) s += "  " + p.description;
    if (!p.byId.empty()) s += "  (" + p.byId + ")";
    return s;
}

std::vector<std::string> ProcessesHolding(std::string_view path) {
    std::vector<std::string> out;
    const std::string target = RealPath(path);
    DIR* proc = opendir("/proc");
    if (!proc) return out;
    while (dirent* e = readdir(proc)) {
        const char* pid = e->d_name;
        if (*pid < '1' || *pid > '9') continue;
        std::string fdDir = std::string("/proc/") + pid + "/fd";
        DIR* fds = opendir(fdDir.c_str());
        if (!fds) continue;
        bool holds = false;
        while (dirent* f = readdir(fds)) {
            if (f->d_name[0] == '.') continue;
            char buf[PATH_MAX];
            std::string link = fdDir + "/" + f->d_name;
            ssize_t n = readlink(link.c_str(), buf, sizeof buf - 1);
            if (n <= 0) continue;
            buf[n] = 0;
            if (target == buf) {
                holds = true;
                break;
            }
        }
        closedir(fds);
        if (!holds) continue;
        std::string name;
        if (FILE* c = fopen((std::string("/proc/") + pid + "/comm").c_str(), "r")) {
            char buf[64] = {};
            if (fgets(buf, sizeof buf, c)) name = buf;
            fclose(c);
            while (!name.empty() && (name.back() == '\n' || name.back() == '\r')) name.pop_back();
        }
        out.push_back(std::string(pid) + " (" + name + ")");
    }
    closedir(proc);
    return out;
}

std::string DiagnosePortFailure(std::string_view path, int err, std::string_view reason,
                                const std::vector<PortInfo>& ports) {
    std::string p(path);
    std::string s = "\r\n*Port " + p + ": " +
                    (reason.empty() ? std::string(std::strerror(err)) : std::string(reason));
    switch (err) {
        case EACCES:
        case EPERM: {
            struct stat sb {};
            if (stat(p.c_str(), &sb) == 0) {
                s += "\r\n*The device belongs to user " + UserName(sb.st_uid) + " and group " +
                     GroupName(sb.st_gid) + ", mode " + ModeText(sb.st_mode) +
                     "; this program runs as user " + UserName(geteuid()) + ".";
                const std::string grp = GroupName(sb.st_gid);
                if (grp == "dialout") {
                    s += "\r\n*Fix: add your user to the group dialout (sudo usermod -a -G dialout "
                         "$USER), then log in again.";
                } else {
                    s += "\r\n*Fix: serial ports belong to the group dialout; add your user to it "
                         "(sudo usermod -a -G dialout $USER) and log in again, or give the group " +
                         grp + " access to this device.";
                }
            } else {
                s += "\r\n*Fix: add your user to the group dialout (sudo usermod -a -G dialout "
                     "$USER), then log in again.";
            }
            break;
        }
        case EBUSY: {
            auto holders = ProcessesHolding(p);
            if (holders.empty()) {
                s += "\r\n*Another program holds the port; /proc does not tell which.";
            } else {
                s += "\r\n*The port is held by process";
                for (std::size_t i = 0; i < holders.size(); ++i) s += (i ? ", " : " ") + holders[i];
                s += ". End it or choose another port.";
            }
            break;
        }
        case ENOENT:
        case ENODEV:
        case ENXIO: {
            s += "\r\n*No such device. Ports of this system:";
            if (ports.empty()) s += "\r\n*  (none found)";
            for (const auto& port : ports) s += "\r\n*  " + PortLine(port);
            break;
        }
        case EIO:
            s += "\r\n*The device stopped answering: the adapter may have been unplugged.";
            break;
        case ENOTTY:
            s += "\r\n*This is not a serial device.";
            break;
        case ECONNREFUSED:
        case ETIMEDOUT:
        case EHOSTUNREACH:
        case ENETUNREACH:
            s += "\r\n*Nothing answers at this address: is the serial server running?";
            break;
        default:
            break;
    }
    return s;
}

}  // namespace vortelm::link
