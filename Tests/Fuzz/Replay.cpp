// Runs one fuzz target over the files of a directory: the regression test of that target.
#include "Fuzz.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

std::vector<uint8_t> contents(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Whether the target's property holds for `input`.
bool holds(const std::vector<uint8_t> &input, const std::string &name)
{
    try {
        LLVMFuzzerTestOneInput(input.data(), input.size());
        return true;
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), failure.what());
        return false;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return 2;
    }
    int inputs = 0;
    int failures = 0;
    for (const auto &entry : std::filesystem::directory_iterator(argv[1])) {
        ++inputs;
        failures += holds(contents(entry.path()), entry.path().string()) ? 0 : 1;
    }
    std::printf("%d inputs replayed, %d failed\n", inputs, failures);
    return inputs > 0 && failures == 0 ? 0 : 1;
}
