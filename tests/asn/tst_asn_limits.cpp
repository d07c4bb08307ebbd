#include "tests/asn/tree.h"
#include "tests/support/message_recorder.h"
#include "tests/support/processor_time.h"

#include "asn/asn_values.h"
#include "asn/pxasn.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <malloc.h>
#include <QTest>

#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

using Input = std::function<QByteArray(int)>;
using Work = std::function<void(PXAsn &)>;

QByteArray header(int tag, int size)
{
    const auto octet = [size](int shift) { return static_cast<char>(size >> shift & 0xFF); };
    const char octets[] = {
        static_cast<char>(tag), '\x84', octet(24), octet(16), octet(8), octet(0)};
    return {octets, sizeof octets};
}

QByteArray extended(const QByteArray &content)
{
    return header(0xA3, int(content.size())) + content;
}

// Levels around a core; each header comes before and `behind` after what it holds.
QByteArray nested(int tag, int levels, const QByteArray &core, const QByteArray &behind)
{
    QByteArray before;
    for (int level = levels - 1; level >= 0; --level)
        before += header(tag, int(core.size() + behind.size() * (level + 1)) + 6 * level);
    return before + core + behind.repeated(levels);
}

std::size_t memoryInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

struct Cost
{
    double seconds = std::numeric_limits<double>::max();
    double octets = 0;
};

// Opening, reading and closing; the least of three times.
Cost costOf(const QByteArray &input, const Work &work)
{
    const MessageRecorder debugStream;
    Cost cost;
    for (int i = 0; i < 3; ++i) {
        const std::size_t before = memoryInUse();
        const ProcessorTime timer;
        PXAsn document(nullptr);
        document.open(input);
        cost.octets = static_cast<double>(memoryInUse()) - static_cast<double>(before);
        work(document);
        document.close();
        cost.seconds = std::min(cost.seconds, timer.seconds());
    }
    return cost;
}

} // namespace

Q_DECLARE_METATYPE(Input)
Q_DECLARE_METATYPE(Work)
Q_DECLARE_METATYPE(std::function<void()>)

/// Twice the input takes twice the time and memory, whatever it holds.
class TestAsnLimits : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { g_bExtend = 0; }

    void linear_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<Input>("input");
        QTest::addColumn<Work>("work");
        const auto row = [](
                             const char *name, int size, const Input &input,
                             const Work &work = [](PXAsn &) {}) {
            QTest::newRow(name) << size << input << work;
        };
        const QByteArray null = QByteArray::fromHex("0500");
        const auto nulls = [null](int size) { return null.repeated(size); };
        const auto flat = [nulls](int size) { return header(0x30, 2 * size) + nulls(size); };
        row("elements of two octets", 100000, flat);
        row("empty SEQUENCEs of two octets", 100000,
            [](int size) { return extended(QByteArray::fromHex("3000").repeated(size)); });
        row("OCTET STRINGs that hold an element", 50000,
            [](int size) { return extended(QByteArray::fromHex("04020500").repeated(size)); });
        row("OCTET STRINGs that end in garbage", 50000, [](int size) {
            return extended(QByteArray::fromHex("0405050005"
                                                "00FF")
                                .repeated(size));
        });
        row("nested OCTET STRINGs, each ends in garbage", 200000,
            [null](int size) { return extended(nested(0x04, size, null, "\xFF")); });
        row("nested OCTET STRINGs, garbage in the innermost", 200000,
            [](int size) { return extended(nested(0x04, size, "\xFF", {})); });
        row("nested OCTET STRINGs, an element behind each", 200000,
            [null](int size) { return extended(nested(0x04, size, null, null)); });
        // What tries each level and throws it away doubles its work a hundred times here.
        row("a hundred OCTET STRINGs around elements and garbage", 100000,
            [nulls](int size) { return extended(nested(0x04, 100, nulls(size) + '\xFF', {})); });
        row("a hundred OCTET STRINGs around elements, garbage in the outermost", 100000,
            [nulls](int size) {
                return extended(header(0x04, 2 * size + 601) + nested(0x04, 100, nulls(size), {}) +
                                '\xFF');
            });
        row("chain of SEQUENCEs", 400000,
            [null](int size) { return nested(0x30, size, null, {}); });
        row("chain of SEQUENCEs with garbage", 400000,
            [null](int size) { return nested(0x30, size, null, "\xFF"); });
        row("one large leaf", 4000000,
            [](int size) { return header(0x04, size) + QByteArray(size, 'x'); });
        row(
            "one large leaf as text", 1000000,
            [](int size) { return header(0x04, size) + QByteArray(size, 'x'); },
            [](PXAsn &document) { document.printData_ex(); });
        row(
            "long UTF8String", 1000000,
            [](int size) { return header(0x0C, size) + QByteArray(size, 'x'); },
            [](PXAsn &document) { document.print(); });
        row(
            "long BMPString", 500000,
            [](int size) { return header(0x1E, 2 * size) + QByteArray(2 * size, 'x'); },
            [](PXAsn &document) { document.toString(); });
        row(
            "long identifier", 1000000,
            [](int size) { return header(0x06, size) + QByteArray(size, '\x81'); },
            [](PXAsn &document) { document.printData_ex(); });
        row("many values", 100000, flat, [](PXAsn &document) {
            std::vector<QString> values;
            std::vector<certpolicy> items;
            int level = 0;
            document.get_extendata(values);
            document.get_extendata_certpolicy(items, level);
            document.myprint();
            document.get_basedata();
        });
        row("many children built", 100000, flat, [](PXAsn &document) {
            document.update();
            document.build();
        });
        row("no DER, so base64", 1000000,
            [](int size) { return (header(0x04, size) + QByteArray(size, 'x')).toBase64(); });
    }

    void linear()
    {
        QFETCH(int, size);
        QFETCH(Input, input);
        QFETCH(Work, work);
        const QByteArray small = input(size);
        const Cost one = costOf(small, work);
        const Cost two = costOf(input(2 * size), work);
        qInfo("%.3f s, %.3f s; %.0f KiB, %.0f KiB", one.seconds, two.seconds, one.octets / 1024,
              two.octets / 1024);
        // What is quadratic takes four times as long. Where little is to do, the clock is coarse,
        // and the system may take longer for the memory than the work does: 30 ms were seen.
        QVERIFY2(two.seconds < 3 * one.seconds + 0.05,
                 qPrintable(QStringLiteral("%1 s, %2 s").arg(one.seconds).arg(two.seconds)));
        QVERIFY2(two.octets < 2.5 * one.octets + 65536,
                 qPrintable(QStringLiteral("%1, %2 octets").arg(one.octets).arg(two.octets)));
        constexpr double kOctetsAnElement = 500;
        QVERIFY(one.octets < kOctetsAnElement / 2 * double(small.size()) + 65536);
    }

    void manyElements()
    {
        const int count = 1000000;
        PXAsn document(nullptr);
        QCOMPARE(
            document.open(header(0x30, 2 * count) + QByteArray::fromHex("0500").repeated(count)),
            1);
        QCOMPARE(document.getChildCount(), count);
        QVERIFY(document.getChild(count - 1, 0x05));
    }

    void mostElements()
    {
        const int beyond = static_cast<int>(ASN_MAX_ELEMENTS) + 10;
        const AsnBlockPtr root =
            parsed(header(0x30, 2 * beyond) + QByteArray::fromHex("0500").repeated(beyond));
        unsigned int count = 1;
        for (const stASN_CHILD_CELL *cell = ASNFirstCell(root.get()); cell; cell = cell->next)
            ++count;
        QCOMPARE(count, ASN_MAX_ELEMENTS);
    }

    void everythingIsFreed_data()
    {
        using Round = std::function<void()>;
        QTest::addColumn<Round>("round");
        const auto row = [](const char *name, const Round &round) { QTest::newRow(name) << round; };
        // A string that holds an element, a branch, and a string that holds none.
        const QByteArray inside = QByteArray::fromHex("0403020161"
                                                      "3003020162"
                                                      "04020461");
        const QByteArray der = extended(inside);
        row("tree", [der] { parsed(der); });
        row("tree with a cell of nothing", [der] {
            const AsnBlockPtr root = parsed(der);
            ASNAppendChild(root.get(), nullptr);
            ASNAppendChild(root.get(), parsed(der).release());
        });
        row("what is refused", [der] {
            const AsnBlockPtr leaf(ASNAddSample(0x02, nullptr));
            ASNAddSample(0x02, leaf.get());
            ASNAddStruct(0x30, leaf.get());
            ASNAddByData(leaf.get(), octets(der), unsigned(der.size()));
        });
        row("child", [der] {
            const AsnBlockPtr root = parsed(der);
            ASNRemoveChild(root.get(), 0);
        });
        row("content", [der] {
            const AsnBlockPtr root = parsed(der);
            for (int i = 0; i < 2; ++i)
                ASNSetBlockData(ASNGetChild(root.get(), 0), octets(der), 5);
        });
        row("bit string", [] {
            const AsnBlockPtr leaf(ASNAddSample(0x03, nullptr));
            ASNSetBitStringData(leaf.get(), octets("abc"), 3, 0);
        });
        row("document", [der] {
            PXAsn document(nullptr);
            document.open(der);
            document.getChild(0, 0)->getChild(0, 0);
            document.open(der);
            document.create(0x30);
        });
        row("document changed", [der] {
            PXAsn document(nullptr);
            document.addBlock(der);
            document.open(der);
            document.addBlock(der);
            document.addSample(0x30);
            document.getChild(0, 0)->setData("x");
            document.remove(1);
        });
    }

    void everythingIsFreed()
    {
        QFETCH(std::function<void()>, round);
        const MessageRecorder debugStream;
        const auto rounds = [&round](int count) {
            for (int i = 0; i < count; ++i)
                round();
            MessageRecorder::messages() = QStringList();
            return memoryInUse();
        };
        constexpr int kRounds = 2000;
        const std::size_t before = rounds(10);
        QVERIFY(rounds(kRounds) <
                before + 8 * std::size_t(kRounds)); // the least that can be lost has sixteen octets
    }

    // As where it is too deep: its octets stay whole, and what comes behind parses.
    void mostElementsInAnOctetString()
    {
        const QByteArray null = QByteArray::fromHex("0500");
        const auto leftBehind = [&](int count, const QByteArray &first) {
            const QByteArray run = first + null.repeated(count);
            const QByteArray string = header(0x04, int(run.size())) + run;
            const AsnBlockPtr root = parsed(extended(string + null));
            const stASN_BLOCK_HEADER *held = ASNGetChild(root.get(), 0);
            const bool isWhole = held->rawFlag == 0 || held->contentLength == unsigned(run.size());
            return QStringLiteral("%1 %2 %3")
                .arg(held->rawFlag)
                .arg(isWhole)
                .arg(ASNGetChild(root.get(), 1) ? 1 : 0);
        };
        const int most = static_cast<int>(ASN_MAX_ELEMENTS) - 2; // but for the two around
        QCOMPARE(leftBehind(most, {}), QStringLiteral("0 1 0"));
        QCOMPARE(leftBehind(most + 1, {}), QStringLiteral("1 1 1"));
        // The elements of a constructed one count, whose own end is never the string's.
        const QByteArray sequence = header(0x30, 200) + null.repeated(100);
        QCOMPARE(leftBehind(most - 101, sequence), QStringLiteral("0 1 0"));
        QCOMPARE(leftBehind(most - 100, sequence), QStringLiteral("1 1 1"));
    }
};

QTEST_GUILESS_MAIN(TestAsnLimits)
#include "tst_asn_limits.moc"
