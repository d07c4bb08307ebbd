#include "pxcpp/code_convert.h"
#include "pxcpp/tables/code_tables.h"

#include <algorithm>
#include <functional>
#include <iconv.h>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTest>
#include <vector>

namespace {

constexpr int kCodes = 0x10000;
constexpr unsigned short kOemPages[] = {437, 720, 737, 771, 775, 850, 852, 855, 857,
                                        860, 861, 862, 863, 864, 865, 866, 869};

/// A mapping of every 16-bit value, 0 where there is none.
using Mapping = std::vector<unsigned int>;

struct page_mappings
{
    Mapping to;   ///< from characters to codes
    Mapping from; ///< from codes to characters
};

unsigned int number(const QByteArray &octets)
{
    unsigned int result = 0;
    for (const char octet : octets)
        result = result << 8 | static_cast<unsigned char>(octet);
    return result;
}

QByteArray utf16(int character)
{
    return QByteArray(1, char(character >> 8)).append(char(character & 0xFF));
}

/// A code as text: one octet below 0x100, two from there on.
QByteArray codeText(int code)
{
    return code < 0x100 ? QByteArray(1, char(code)) : utf16(code);
}

/// One character through a converter; empty unless it is whole and mapped without loss.
QByteArray convert(iconv_t converter, QByteArray text)
{
    char output[16];
    char *from = text.data();
    char *to = output;
    auto fromLeft = std::size_t(text.size());
    std::size_t toLeft = sizeof output;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    const bool exact = iconv(converter, &from, &fromLeft, &to, &toLeft) == 0 && fromLeft == 0;
    iconv(converter, nullptr, nullptr, &to, &toLeft);
    return exact ? QByteArray(output, int(sizeof output - toLeft)) : QByteArray();
}

page_mappings iconvPage(unsigned short page)
{
    const QByteArray name = "CP" + QByteArray::number(page);
    iconv_t encoder = iconv_open(name, "UTF-16BE");
    iconv_t decoder = iconv_open("UTF-16BE", name);
    page_mappings result;
    for (int i = 0; i < kCodes; ++i) {
        result.to.push_back(number(convert(encoder, utf16(i))));
        const QByteArray character = convert(decoder, codeText(i));
        result.from.push_back(character.size() == 2 ? number(character) : 0);
    }
    iconv_close(encoder);
    iconv_close(decoder);
    return result;
}

QByteArray uconv(const QStringList &arguments, const QByteArray &text)
{
    QProcess process;
    process.start("uconv", arguments);
    process.write(text);
    process.closeWriteChannel();
    process.waitForFinished();
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

/// The same from ICU. Each value is a line; those that would break lines are left at 0.
page_mappings icuPage(const QString &name)
{
    page_mappings result{Mapping(kCodes), Mapping(kCodes)};
    QVector<int> values;
    QByteArray text;
    for (int i = 0; i < kCodes; ++i) {
        if (i != '\n' && !QChar::isSurrogate(uint(i))) {
            values << i;
            text += utf16(i) + QByteArray("\0\n", 2);
        }
    }
    const auto codes =
        uconv({"-f", "UTF-16BE", "-t", name, "--to-callback", "skip"}, text).split('\n');
    for (int i = 0; i < values.size() && codes.size() == values.size() + 1; ++i)
        result.to[std::size_t(values[i])] = number(codes[i]);

    values.clear();
    text.clear();
    for (int i = 0; i < kCodes; ++i) {
        if ((i & 0xFF) != '\n' && i >> 8 != '\n') {
            values << i;
            text += codeText(i) + '\n';
        }
    }
    // What is not one whole code comes out as something else than one character, or as U+FFFD.
    const QByteArray output =
        uconv({"-f", name, "-t", "UTF-8", "--from-callback", "substitute"}, text);
    const auto lines = QString::fromUtf8(output.constData(), output.size()).split('\n');
    for (int i = 0; i < values.size() && lines.size() == values.size() + 1; ++i) {
        if (lines[i].size() == 1 && lines[i][0] != QChar::ReplacementCharacter)
            result.from[std::size_t(values[i])] = lines[i][0].unicode();
    }
    result.to['\n'] = result.from['\n'] = '\n';
    return result;
}

page_mappings referenceFor(unsigned short page)
{
    switch (page) {
    case 720:
        return icuPage("ibm-720");
    case 950:
        return icuPage("windows-950-2000");
    default:
        return iconvPage(page);
    }
}

/// A run of values where the library differs on purpose from the reference.
struct difference
{
    unsigned int first;
    unsigned int last;
    unsigned int theirs; ///< what the reference has for the first of them
    unsigned int ours;   ///< what the library has for all of them
};

QVector<difference> differencesOf(const QByteArray &page, const QByteArray &direction)
{
    QFile file(PX_TEST_DATA "/pxcpp/code_page_differences.tsv");
    QVector<difference> result;
    if (!file.open(QIODevice::ReadOnly))
        return result;
    while (!file.atEnd()) {
        const QByteArrayList fields = file.readLine().trimmed().split('\t');
        if (fields.size() == 7 && fields[0] == page && fields[1] == direction) {
            const auto hex = [&](int i) { return fields[i].toUInt(nullptr, 16); };
            result << difference{hex(2), hex(3), hex(4), hex(5)};
        }
    }
    return result;
}

/// Where the library differs from the reference in another way than listed; empty when nowhere.
QString unexplained(const Mapping &reference, const QVector<difference> &differences,
                    const std::function<unsigned int(unsigned int)> &lookUp)
{
    Mapping expected = reference;
    for (const difference &row : differences) {
        if (reference[row.first] != row.theirs)
            return QString("listed wrongly at %1").arg(row.first, 0, 16);
        for (unsigned int i = row.first; i <= row.last; ++i) {
            if (expected[i] == row.ours)
                return QString("listed, but no difference at %1").arg(i, 0, 16);
            expected[i] = row.ours;
        }
    }
    for (unsigned int i = 0; i < kCodes; ++i) {
        if (lookUp(i) != expected[i]) {
            return QString("%1: %2, not %3")
                .arg(i, 0, 16)
                .arg(lookUp(i), 0, 16)
                .arg(expected[i], 0, 16);
        }
    }
    return QString();
}

struct pair_table
{
    const char *name;
    const code_tables::pair *pairs;
    int highest;
    int real;
    std::function<unsigned short(unsigned short)> lookUp;
};

std::vector<pair_table> pairTables()
{
    using namespace code_tables;
    std::vector<pair_table> result;
    const auto add = [&](unsigned short page, const pair *to, const pair *from, int highest,
                         int realTo) {
        result.push_back({"to", to, highest, realTo,
                          [page](unsigned short value) { return ff_uni2oem(value, page); }});
        result.push_back({"from", from, highest, highest,
                          [page](unsigned short value) { return ff_oem2uni(value, page); }});
    };
    add(932, unicode_to_932, unicode_from_932, 7389, 7389);
    add(936, unicode_to_936, unicode_from_936, 21792, 21792);
    add(949, unicode_to_949, unicode_from_949, 17048, 17048);
    add(950, unicode_to_950, unicode_from_950, 13503, 13493);
    return result;
}

/// Simple upper-case mappings of the BMP where both characters are of Unicode 5.0 or earlier.
QMap<uint, uint> upperCasePairs()
{
    QFile ages("/usr/share/unicode/DerivedAge.txt");
    QFile data("/usr/share/unicode/UnicodeData.txt");
    if (!ages.open(QIODevice::ReadOnly) || !data.open(QIODevice::ReadOnly))
        return {};
    std::vector<bool> old(0x110000);
    while (!ages.atEnd()) {
        const auto fields = ages.readLine().split('#')[0].split(';');
        if (fields.size() == 2 && fields[1].trimmed().toDouble() <= 5.0) {
            const QByteArrayList range = fields[0].trimmed().split('.'); // "0061..007A" or "00B5"
            const uint first = range.first().toUInt(nullptr, 16);
            const uint last = range.last().toUInt(nullptr, 16);
            for (uint i = first; i <= last; ++i)
                old[i] = true;
        }
    }
    QMap<uint, uint> result;
    while (!data.atEnd()) {
        const auto fields = data.readLine().split(';');
        const uint character = fields[0].toUInt(nullptr, 16);
        const uint upper = fields[12].toUInt(nullptr, 16);
        if (upper != 0 && character < kCodes && old[character] && old[upper])
            result[character] = upper;
    }
    return result;
}

} // namespace

class TestPxcppCodePages : public QObject
{
    Q_OBJECT

private slots:
    void likeTheReference_data();
    void likeTheReference();
    void pairTablesAreSorted();
    void everyPairIsFound();
    void likeAPlainSearch();
    void singleByteTables();
    void limits();
    void unknownPages();
    void charactersOfNote();
    void upperCaseOfEverything();
    void upperCaseRecords();
};

void TestPxcppCodePages::likeTheReference_data()
{
    QTest::addColumn<int>("page");
    for (const int page : {932, 936, 949, 950})
        QTest::addRow("%d", page) << page;
    for (const int page : kOemPages)
        QTest::addRow("%d", page) << page;
}

void TestPxcppCodePages::likeTheReference()
{
    QFETCH(int, page);
    const auto codePage = static_cast<unsigned short>(page);
    const page_mappings reference = referenceFor(codePage);
    QCOMPARE(reference.to.size(), std::size_t(kCodes));
    QCOMPARE(reference.to['A'], 0x41U);
    QCOMPARE(reference.from['A'], 0x41U);

    const QByteArray name = QByteArray::number(page);
    const auto encode = [&](unsigned int value) { return ff_uni2oem(value, codePage); };
    QCOMPARE(unexplained(reference.to, differencesOf(name, "to"), encode), QString());
    const auto decode = [&](unsigned int value) {
        return ff_oem2uni(static_cast<unsigned short>(value), codePage);
    };
    QCOMPARE(unexplained(reference.from, differencesOf(name, "from"), decode), QString());
}

void TestPxcppCodePages::pairTablesAreSorted()
{
    for (const pair_table &table : pairTables()) {
        for (int i = 1; i < table.real; ++i)
            QVERIFY2(table.pairs[i - 1].from < table.pairs[i].from, table.name);
        for (int i = table.real; i <= table.highest; ++i) {
            QCOMPARE(uint(table.pairs[i].from), 0xFFFFU);
            QCOMPARE(uint(table.pairs[i].to), 0U);
        }
    }
}

void TestPxcppCodePages::everyPairIsFound()
{
    for (const pair_table &table : pairTables()) {
        for (int i = 0; i < table.real; ++i) {
            QVERIFY(table.pairs[i].to != 0);
            QCOMPARE(table.lookUp(table.pairs[i].from), table.pairs[i].to);
        }
    }
}

void TestPxcppCodePages::likeAPlainSearch()
{
    // Narrows to either side of each probe and ends at a match; the bound itself is never probed.
    const auto plainSearch = [](const pair_table &table, int value) {
        int low = 0;
        int high = table.highest;
        for (int probes = 0; probes < 16; ++probes) {
            const int probe = low + (high - low) / 2;
            if (probe >= table.highest)
                return -1;
            if (table.pairs[probe].from == value)
                return int(table.pairs[probe].to);
            (table.pairs[probe].from < value ? low : high) = probe;
        }
        return 0;
    };
    for (const pair_table &table : pairTables()) {
        for (int value = 0x80; value < kCodes; ++value) {
            QCOMPARE(int(table.lookUp(static_cast<unsigned short>(value))),
                     plainSearch(table, value));
        }
    }
}

void TestPxcppCodePages::singleByteTables()
{
    for (std::size_t i = 0; i < std::size(kOemPages); ++i) {
        QCOMPARE(code_tables::oem_pages[i], kOemPages[i]);
        const std::uint16_t *table = code_tables::oem_to_unicode[i];
        for (unsigned short octet = 0x80; octet < 0x100; ++octet) {
            const unsigned short character = table[octet - 0x80];
            QCOMPARE(ff_oem2uni(octet, kOemPages[i]), character);
            // Each character stands in a table once, so it comes back.
            QCOMPARE(ff_uni2oem(character, kOemPages[i]), character != 0 ? octet : ushort(0));
        }
    }
    QCOMPARE(uint(code_tables::oem_pages[17]), 0U);
}

void TestPxcppCodePages::limits()
{
    const unsigned short pages[] = {437, 850, 869, 932, 936, 949, 950, 0, 900, 12345};
    for (const unsigned short page : pages) {
        for (unsigned short value = 0; value < 0x80; ++value) {
            QCOMPARE(ff_uni2oem(value, page), value);
            QCOMPARE(ff_oem2uni(value, page), value);
        }
        for (const unsigned int value : {0x10000U, 0x100C7U, 0x14E2DU, 0x7FFFFFFFU, 0xFFFFFFFFU})
            QCOMPARE(uint(ff_uni2oem(value, page)), 0U);
        QCOMPARE(uint(ff_uni2oem(0xFFFF, page)), 0U);
        QCOMPARE(uint(ff_oem2uni(0xFFFF, page)), 0U);
    }
    QCOMPARE(uint(ff_oem2uni(0x100, 437)), 0U);
    QCOMPARE(uint(ff_oem2uni(0x180, 437)), 0U);
    QCOMPARE(uint(ff_oem2uni(0xFF, 437)), 0xA0U);
}

void TestPxcppCodePages::unknownPages()
{
    for (int page = 0; page < kCodes; ++page) {
        const bool known =
            std::find(std::begin(kOemPages), std::end(kOemPages), page) != std::end(kOemPages) ||
            page == 932 || page == 936 || page == 949 || page == 950;
        if (!known) {
            const auto codePage = static_cast<unsigned short>(page);
            QCOMPARE(uint(ff_uni2oem(0xE9, codePage)), 0U);
            QCOMPARE(uint(ff_oem2uni(0x82, codePage)), 0U);
            QCOMPARE(uint(ff_oem2uni(0xD6D0, codePage)), 0U);
        }
    }
}

void TestPxcppCodePages::charactersOfNote()
{
    const unsigned short start[] = {0x00C7, 0x00FC, 0x00E9, 0x00E2};
    QVERIFY(std::equal(std::begin(start), std::end(start), code_tables::oem_to_unicode[0]));

    QCOMPARE(uint(ff_uni2oem(0x20AC, 936)), 0x80U);
    QCOMPARE(uint(ff_oem2uni(0x80, 936)), 0x20ACU);
    QCOMPARE(uint(ff_uni2oem(0xFF71, 932)), 0xB1U);
    QCOMPARE(uint(ff_oem2uni(0xB1, 932)), 0xFF71U);
    QCOMPARE(uint(ff_uni2oem(0x4E2D, 936)), 0xD6D0U);
    QCOMPARE(uint(ff_uni2oem(0x4E2D, 932)), 0x9286U);
    QCOMPARE(uint(ff_uni2oem(0x4E2D, 949)), 0xF1E9U);
    QCOMPARE(uint(ff_uni2oem(0x4E2D, 950)), 0xA4A4U);

    // The four box-drawing characters with two codes in 950: the later one is written.
    const unsigned short box[][3] = {{0x2550, 0xF9F9, 0xA2A4},
                                     {0x255E, 0xF9E9, 0xA2A5},
                                     {0x2561, 0xF9EB, 0xA2A7},
                                     {0x256A, 0xF9EA, 0xA2A6}};
    for (const auto &[character, written, other] : box) {
        QCOMPARE(ff_uni2oem(character, 950), written);
        QCOMPARE(ff_oem2uni(written, 950), character);
        QCOMPARE(ff_oem2uni(other, 950), character);
    }
}

void TestPxcppCodePages::upperCaseOfEverything()
{
    const QMap<uint, uint> pairs = upperCasePairs();
    QCOMPARE(pairs.size(), 891);
    for (uint character = 0; character < kCodes; ++character)
        QCOMPARE(ff_wtoupper(character), pairs.value(character, character));
    // U+10428 has an upper-case form, but it is beyond the tables.
    for (const uint character : {0x10000U, 0x10061U, 0x10428U, 0x7FFFFFFFU, 0xFFFFFFFFU})
        QCOMPARE(ff_wtoupper(character), character);
}

void TestPxcppCodePages::upperCaseRecords()
{
    QCOMPARE(uint(code_tables::upper_case_low[0]), 0x61U);
    QCOMPARE(uint(code_tables::upper_case_high[0]), 0x1D7DU);

    std::vector<int> used(9);
    for (const auto *record : {code_tables::upper_case_low, code_tables::upper_case_high}) {
        const bool low = record == code_tables::upper_case_low;
        for (uint end = 0; record[0] != 0;) {
            const uint command = record[1] >> 8;
            const uint count = record[1] & 0xFF;
            QVERIFY(record[0] >= end && count > 0 && command <= 8);
            ++used[command];
            end = record[0] + count;
            QVERIFY(low ? end <= 0x1000 : record[0] >= 0x1000 && end <= kCodes);
            record += command == 0 ? 2 + count : 2;
        }
    }
    QVERIFY(std::find(used.begin(), used.end(), 0) == used.end());
}

QTEST_GUILESS_MAIN(TestPxcppCodePages)
#include "tst_pxcpp_code_pages.moc"
