// [-runs=COUNT] [FILE|FOLDER]...: runs a fuzz target without a fuzzer, on the files named and those
// in the folders, then on COUNT generated inputs, or 20,000 if nothing is named at all.

#include "fuzz_target.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

/// Up to 64 octets, half of them any and half of those that formats are made of.
std::vector<std::uint8_t> generated(std::mt19937 &random)
{
    static const std::string notable("\0\x01\x02\x7F\x80\x81\x9F\xBF\xC2\xE4\xF0\xFF=A0", 15);
    std::vector<std::uint8_t> input(random() % 65);
    for (std::uint8_t &octet : input) {
        const auto value = random();
        octet = std::uint8_t(value >> 8);
        if (value % 2 == 0)
            octet = std::uint8_t(notable[octet % notable.size()]);
    }
    return input;
}

void run(const std::vector<std::uint8_t> &input)
{
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

void runFile(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    require(file.good());
    std::cerr << path << '\n' << std::flush; // it names the input that ends the program
    run({std::istreambuf_iterator<char>(file), {}});
}

void runAll(const std::filesystem::path &path)
{
    if (!std::filesystem::is_directory(path)) {
        runFile(path);
        return;
    }
    const std::filesystem::directory_iterator files(path);
    require(files != std::filesystem::directory_iterator()); // a corpus that is not there
    for (const auto &file : files)
        runFile(file.path());
}

} // namespace

int main(int argc, char **argv)
{
    const std::string runs("-runs=");
    int count = argc == 1 ? 20000 : 0;
    for (int i = 1; i < argc; ++i) {
        const std::string argument(argv[i]);
        if (argument.compare(0, runs.size(), runs) == 0)
            count = std::stoi(argument.substr(runs.size()));
        else
            runAll(argument);
    }
    std::mt19937 random(1);
    while (count-- > 0)
        run(generated(random));
    return 0;
}
