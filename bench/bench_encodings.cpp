// The encoding library beside the C library's iconv and Qt's base64, in one run. After the usual
// table it prints how each operation's time relates to its rival's, by the fastest repetition, and
// ends with 1 when one is above its limit.

#include "pxcpp/base64.h"
#include "pxcpp/code_convert.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <iconv.h>
#include <map>
#include <QByteArray>
#include <QRandomGenerator>
#include <QString>
#include <string>
#include <vector>

namespace {

constexpr int kSize = 1 << 20;

struct rivalry
{
    const char *operation;
    const char *rival;
    double limit; ///< our time by the rival's
};

constexpr rivalry kRivalries[] = {
    {"gbk_to_utf8", "iconv", 4.0},
    {"utf8_to_gbk", "iconv", 4.0},
    {"base64_encode", "QByteArray", 1.0},
    {"base64_decode", "QByteArray", 1.0},
};

/// 1 MiB of octets at least: any of the page's ideographs, and a letter in four.
QByteArray chineseText()
{
    QRandomGenerator random(1);
    QString text;
    while (text.size() < kSize / 3) {
        text += random.bounded(4) == 0 ? QChar(random.bounded('a', 'z'))
                                       : QChar(random.bounded(0x4E00, 0x9FA6));
    }
    return text.toUtf8();
}

QByteArray randomOctets()
{
    QRandomGenerator random(2);
    QByteArray result(kSize, '\0');
    std::generate(result.begin(), result.end(), [&] { return char(random.bounded(256)); });
    return result;
}

QByteArray throughIconv(const char *target, const char *source, QByteArray text)
{
    QByteArray result(2 * text.size(), '\0');
    char *from = text.data();
    char *to = result.data();
    auto fromLeft = std::size_t(text.size());
    auto toLeft = std::size_t(result.size());
    iconv_t converter = iconv_open(target, source);
    if (iconv(converter, &from, &fromLeft, &to, &toLeft) != 0)
        std::abort();
    iconv_close(converter);
    result.chop(int(toLeft));
    return result;
}

const QByteArray utf8 = chineseText();
const QByteArray gbk = throughIconv("CP936", "UTF-8", utf8);
const QByteArray octets = randomOctets();
const QByteArray base64 = octets.toBase64();

void iconvRun(benchmark::State &state, const char *target, const char *source,
              const QByteArray &text)
{
    iconv_t converter = iconv_open(target, source);
    std::vector<char> input(text.begin(), text.end());
    std::vector<char> output(2 * input.size());
    while (state.KeepRunning()) {
        char *from = input.data();
        char *to = output.data();
        auto fromLeft = input.size();
        auto toLeft = output.size();
        if (iconv(converter, &from, &fromLeft, &to, &toLeft) != 0)
            state.SkipWithError("iconv failed");
        benchmark::DoNotOptimize(output.data());
    }
    state.SetBytesProcessed(state.iterations() * text.size());
    iconv_close(converter);
}

void gbkToUtf8(benchmark::State &state)
{
    std::vector<char> output(std::size_t(utf8.size()) + 6);
    while (state.KeepRunning()) {
        if (code_gbk_to_utf8(gbk.constData(), output.data(), int(utf8.size())) != utf8.size())
            state.SkipWithError("not the whole text");
    }
    state.SetBytesProcessed(state.iterations() * gbk.size());
}

void utf8ToGbk(benchmark::State &state)
{
    std::vector<char> output(2 * (3 * std::size_t(utf8.size()) + 1));
    while (state.KeepRunning()) {
        if (code_utf8_to_gbk(utf8.constData(), output.data()) != gbk.size())
            state.SkipWithError("not the whole text");
    }
    state.SetBytesProcessed(state.iterations() * utf8.size());
}

void encode(benchmark::State &state)
{
    while (state.KeepRunning()) {
        char *text = PXBase64Encode(octets.constData(), kSize);
        benchmark::DoNotOptimize(text);
        std::free(text);
    }
    state.SetBytesProcessed(state.iterations() * octets.size());
}

void encodeByQt(benchmark::State &state)
{
    while (state.KeepRunning()) {
        QByteArray text = octets.toBase64();
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(state.iterations() * octets.size());
}

void decode(benchmark::State &state)
{
    while (state.KeepRunning()) {
        std::uint64_t length = 0;
        unsigned char *data = PXBase64Decode(base64.constData(), &length);
        if (length != kSize)
            state.SkipWithError("not the whole text");
        std::free(data);
    }
    state.SetBytesProcessed(state.iterations() * base64.size());
}

void decodeByQt(benchmark::State &state)
{
    while (state.KeepRunning()) {
        QByteArray data = QByteArray::fromBase64(base64);
        benchmark::DoNotOptimize(data.data());
    }
    state.SetBytesProcessed(state.iterations() * base64.size());
}

/// The usual table; remembers the fastest repetition of each benchmark.
class FastestReporter : public benchmark::ConsoleReporter
{
public:
    FastestReporter()
        : ConsoleReporter(OO_None)
    {
    }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            // One that failed took no time; how it is marked differs between the library's
            // versions.
            const double time = run.GetAdjustedCPUTime();
            if (run.run_type == Run::RT_Iteration && time > 0) {
                const auto [at, first] = m_fastest.emplace(run.run_name.function_name, time);
                at->second = first ? time : std::min(at->second, time);
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    /// 0 for a benchmark that failed or wasn't run.
    double fastest(const std::string &name) const
    {
        const auto found = m_fastest.find(name);
        return found != m_fastest.end() ? found->second : 0;
    }

private:
    std::map<std::string, double> m_fastest;
};

void add(const char *name, void (*run)(benchmark::State &))
{
    benchmark::RegisterBenchmark(name, run)->Repetitions(10)->MinTime(0.1);
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    add("gbk_to_utf8/pxcpp", gbkToUtf8);
    add("gbk_to_utf8/iconv", [](benchmark::State &s) { iconvRun(s, "UTF-8", "CP936", gbk); });
    add("utf8_to_gbk/pxcpp", utf8ToGbk);
    add("utf8_to_gbk/iconv", [](benchmark::State &s) { iconvRun(s, "CP936", "UTF-8", utf8); });
    add("base64_encode/pxcpp", encode);
    add("base64_encode/QByteArray", encodeByQt);
    add("base64_decode/pxcpp", decode);
    add("base64_decode/QByteArray", decodeByQt);

    FastestReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    int result = 0;
    for (const auto &[operation, rival, limit] : kRivalries) {
        const std::string name = std::string(operation) + "/";
        const double ratio = reporter.fastest(name + "pxcpp") / reporter.fastest(name + rival);
        const bool met = ratio <= limit;
        std::printf("%-14s %.2f times %s's time, at most %.2f: %s\n", operation, ratio, rival,
                    limit, met ? "met" : "MISSED");
        result = met ? result : 1;
    }
    return result;
}
