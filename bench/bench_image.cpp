// Times vortelm-cli against objcopy and srec_cat on a 16 MiB image: whole
// processes, the same input files, outputs compared with the image.

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;

struct Timing {
    double wall = 0;  // seconds
    double cpu = 0;   // user + system seconds
};

// Runs argv with stdin from the given file (or /dev/null); stdout and
// stderr go to /dev/null. Exits the benchmark when the program fails.
Timing Run(const std::vector<std::string>& args, const std::string& input) {
    std::vector<char*> argv;
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_addopen(&fa, 0, input.empty() ? "/dev/null" : input.c_str(), O_RDONLY,
                                     0);
    posix_spawn_file_actions_addopen(&fa, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
    // Each program starts with no dirty data of the one before it, whose
    // write-back would otherwise land in the next one's time (a sync waits
    // for other files' data on some file systems).
    ::sync();
    const auto t0 = std::chrono::steady_clock::now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], &fa, nullptr, argv.data(), environ) != 0) {
        std::fprintf(stderr, "bench_image: cannot start %s\n", argv[0]);
        std::exit(1);
    }
    int status = 0;
    rusage ru{};
    wait4(pid, &status, 0, &ru);
    const auto t1 = std::chrono::steady_clock::now();
    posix_spawn_file_actions_destroy(&fa);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "bench_image: %s failed (status %d)\n", argv[0], status);
        std::exit(1);
    }
    Timing t;
    t.wall = std::chrono::duration<double>(t1 - t0).count();
    t.cpu = double(ru.ru_utime.tv_sec + ru.ru_stime.tv_sec) +
            double(ru.ru_utime.tv_usec + ru.ru_stime.tv_usec) / 1e6;
    return t;
}

std::string ReadAll(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

// Reads the file through, so that each program finds its input in the page
// cache: this machine may drop the pages of a file not read for a second,
// and the program run first after that would pay for the disk alone.
void Warm(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::vector<char> buf(1 << 20);
    while (f.read(buf.data(), static_cast<std::streamsize>(buf.size())) || f.gcount() > 0) {
    }
}

void CheckSame(const fs::path& out, const std::string& image, const char* who) {
    if (ReadAll(out) != image) {
        std::fprintf(stderr, "bench_image: the output of %s differs from the image\n", who);
        std::exit(1);
    }
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    const size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

struct Series {
    std::vector<double> wall, cpu;
    void add(const Timing& t) {
        wall.push_back(t.wall);
        cpu.push_back(t.cpu);
    }
};

void Report(const char* title, const char* ours, const Series& a, const char* peer,
            const Series& b) {
    const double aw = Median(a.wall), bw = Median(b.wall), ac = Median(a.cpu), bc = Median(b.cpu);
    std::printf("%s\n", title);
    std::printf("  %-34s wall %8.3f s   cpu %8.3f s\n", ours, aw, ac);
    std::printf("  %-34s wall %8.3f s   cpu %8.3f s\n", peer, bw, bc);
    std::printf("  ratio vortelm/peer                 wall %8.3f     cpu %8.3f\n", aw / bw,
                ac / bc);
}

// The least any safe converter does with the same files, as a process of
// its own: every page of the input read, the output's bytes written to a
// temporary file in the same folder, synced, renamed over the old one, the
// folder synced. No parsing at all: what is left when the file system's
// work is all there is.
int Floor(const char* input, const char* output, size_t outputSize) {
    const int in = ::open(input, O_RDONLY);
    struct stat sb {};
    if (in < 0 || ::fstat(in, &sb) != 0) return 1;
    const auto* p = static_cast<const unsigned char*>(::mmap(
        nullptr, static_cast<size_t>(sb.st_size), PROT_READ, MAP_PRIVATE | MAP_POPULATE, in, 0));
    if (p == MAP_FAILED) return 1;
    unsigned sum = 0;
    for (off_t i = 0; i < sb.st_size; i += 4096) sum += p[i];
    std::string bytes(outputSize, static_cast<char>(sum));
    std::string temp = std::string(output) + ".XXXXXX";
    const int out = ::mkstemp(temp.data());
    if (out < 0) return 1;
    if (::write(out, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
        ::fsync(out) != 0 || ::close(out) != 0 || ::rename(temp.c_str(), output) != 0)
        return 1;
    const int dir = ::open(fs::path(output).parent_path().c_str(), O_RDONLY | O_DIRECTORY);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::strcmp(argv[1], "--floor") == 0)
        return Floor(argv[2], argv[3], std::strtoull(argv[4], nullptr, 10));
    int runs = 7;
    bool keep = false;
    // Another build's vortelm-cli may be timed instead (--cli PATH), to
    // give an older program's figures on this machine and run.
    std::string cli = VORTELM_CLI;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--keep") == 0)
            keep = true;
        else if (std::strcmp(argv[i], "--cli") == 0 && i + 1 < argc)
            cli = argv[++i];
        else
            runs = std::max(1, std::atoi(argv[i]));
    }
    char tmpl[] = "/tmp/vortelm-bench-XXXXXX";
    if (!mkdtemp(tmpl)) {
        std::perror("mkdtemp");
        return 1;
    }
    const fs::path dir = tmpl;

    // A 16 MiB random image, the same each run of the benchmark.
    std::string image(16u << 20, '\0');
    std::mt19937_64 rng(20261121);
    for (size_t i = 0; i < image.size(); i += 8) {
        const uint64_t v = rng();
        std::memcpy(image.data() + i, &v, 8);
    }
    {
        std::ofstream f(dir / "img.bin", std::ios::binary);
        f.write(image.data(), static_cast<std::streamsize>(image.size()));
    }
    const std::string bin = (dir / "img.bin").string();
    const std::string hex = (dir / "img.hex").string();
    const std::string s28 = (dir / "img.s28").string();
    Run({"srec_cat", bin, "-binary", "-o", hex, "-intel", "-output_block_size=32"}, "");
    Run({"srec_cat", bin, "-binary", "-o", s28, "-motorola", "-address-length=3",
         "-output_block_size=32"},
        "");

    const fs::path home = dir / "home";
    const std::string outV = (dir / "vortelm.bin").string();
    const std::string outP = (dir / "peer.bin").string();
    {
        std::ofstream(dir / "hex.txt") << "_load " << hex << "\n_binsave " << outV << "\n";
        std::ofstream(dir / "sre.txt") << "_loadsre " << s28 << "\n_binsave " << outV << "\n";
    }
    const std::vector<std::string> vortelm = {cli, "--home", home.string()};
    // One run to set up the data home before timing.
    Run(vortelm, "");

    const std::string self = fs::canonical("/proc/self/exe").string();
    const std::string outF = (dir / "floor.bin").string();
    Series vh, oh, fh, vs, ss;
    for (int r = 0; r < runs; ++r) {
        Warm(hex);
        vh.add(Run(vortelm, (dir / "hex.txt").string()));
        CheckSame(outV, image, "vortelm-cli _load");
        Warm(hex);
        oh.add(Run({"objcopy", "-I", "ihex", "-O", "binary", hex, outP}, ""));
        CheckSame(outP, image, "objcopy");
        Warm(hex);
        fh.add(Run({self, "--floor", hex, outF, std::to_string(image.size())}, ""));
        Warm(s28);
        vs.add(Run(vortelm, (dir / "sre.txt").string()));
        CheckSame(outV, image, "vortelm-cli _loadsre");
        Warm(s28);
        ss.add(Run({"srec_cat", s28, "-o", outP, "-binary"}, ""));
        CheckSame(outP, image, "srec_cat");
    }
    std::printf("16 MiB random image, %d runs each, medians (outputs identical to the image)\n",
                runs);
    Report("Intel HEX, 32-byte records, type 04:", "vortelm-cli _load + _binsave", vh,
           "objcopy -I ihex -O binary", oh);
    Report("The same files with no parsing (read, write, sync, rename):",
           "floor: what a safe converter can't skip", fh, "objcopy -I ihex -O binary", oh);
    Report("S28, 32-byte records:", "vortelm-cli _loadsre + _binsave", vs,
           "srec_cat -o out.bin -binary", ss);
    const double goal = Median(vh.wall) / Median(oh.wall);
    std::printf("goal (Intel HEX wall ratio at most 0.25): %s; the floor's ratio is %.3f\n",
                goal <= 0.25 ? "met" : "not met", Median(fh.wall) / Median(oh.wall));
    if (!keep)
        fs::remove_all(dir);
    else
        std::printf("files kept in %s\n", dir.c_str());
    return 0;
}
