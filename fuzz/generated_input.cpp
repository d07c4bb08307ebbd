// Runs a fuzz target without a fuzzer: on the files named, or on 20,000 generated inputs.

#include "fuzz_target.h"

#include <fstream>
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

} // namespace

int main(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        run({std::istreambuf_iterator<char>(file), {}});
    }
    std::mt19937 random(1);
    for (int i = 0; argc == 1 && i < 20000; ++i)
        run(generated(random));
    return 0;
}
