// Writes every image the board understands into a data folder, as Intel HEX.
// The files under data/ are this program's output; a test keeps them equal.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "sim/Images.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: vortelm-sim-images <data folder>\n");
        return 2;
    }
    const std::filesystem::path root = argv[1];
    for (const auto& image : vortelm::sim::DeliveredImages()) {
        const auto path = root / image.file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream out(path, std::ios::binary);
        out << vortelm::sim::ToIntelHex(image.address, image.bytes);
        if (!out) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
        std::printf("%s\n", path.c_str());
    }
    return 0;
}
