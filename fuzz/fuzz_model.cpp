#include "cert/c_pxcert.h"
#include "cert/display_date.h"
#include "cert/recognised_extensions.h"
#include "fuzz_application.h"
#include "fuzz_target.h"
#include "second_reading.h"
#include "util/c_language.h"
#include "util/texts.h"

#include <algorithm>
#include <cstdio>
#include <QCoreApplication>
#include <QStringList>
#include <utility>

namespace {

using Rows = std::vector<detail_node>;

struct Said
{
    Rows rows;
    QStringList blocks;
};

// What the model says of a certificate, in the order that is promised.
Said said(c_pxcert &model, const QByteArray &certificate)
{
    Said said;
    QObject listener;
    QObject::connect(&model, &c_pxcert::result_normal, &listener,
                     [&](const QString &text, int block) {
                         require(block == said.blocks.size());
                         const auto &own = model.ownLineFeeds(block);
                         require(own.size() == std::size_t(text.count(QLatin1Char('\n'))));
                         said.blocks += text;
                     });
    QObject::connect(&model, &c_pxcert::result_detail, &listener, [&](const Rows &rows) {
        require(said.blocks.size() == 2);
        said.rows = rows;
    });
    require(model.parse_cert(certificate));
    require(said.blocks.size() == 2);
    return said;
}

// The forms of leaves, as docs/rows.md lists them.

QString identifierOf(const QByteArray &content)
{
    if (content.size() < 2)
        return {};
    const auto octet = [&](int i) { return static_cast<unsigned char>(content.at(i)); };
    QStringList numbers = {QString::number(octet(0) / 40), QString::number(octet(0) % 40)};
    quint32 number = 0;
    for (int i = 1; i < content.size(); ++i) {
        number = number << 7 | (octet(i) & 0x7FU);
        if (octet(i) >= 0x80)
            continue;
        numbers += QString::number(static_cast<qint32>(number));
        number = 0;
    }
    const QString dotted = numbers.join(QLatin1Char('.'));
    return dotted.size() > 99 ? QString() : texts::nameOfIdentifier(dotted);
}

QString textOfBmp(const QByteArray &content)
{
    QString text;
    for (int i = 0; i + 1 < content.size(); i += 2) {
        const QChar c(static_cast<uchar>(content.at(i + 1)), static_cast<uchar>(content.at(i)));
        // Half of a pair takes three octets, each of which is none of UTF-8.
        text += c.isSurrogate() ? QString(3, QChar::ReplacementCharacter) : QString(c);
    }
    return text.startsWith(QChar(QChar::ByteOrderMark)) ? text.mid(1) : text;
}

QString latin1(const QByteArray &octets)
{
    return QString::fromLatin1(octets.constData(), octets.size());
}

QString textOf(const SecondReading &leaf)
{
    if (leaf.holdsChildren)
        return {};
    switch (leaf.tag) {
    case ASN_TAG_OBJECT_IDENTIFIER:
        return identifierOf(leaf.content);
    case ASN_TAG_UTF8_STRING:
        return QString::fromUtf8(leaf.content.constData(), leaf.content.size());
    case ASN_TAG_BMP_STRING:
        return textOfBmp(leaf.content);
    case ASN_TAG_BIT_STRING:
        return latin1(leaf.content.mid(1));
    default:
        return latin1(leaf.content);
    }
}

QString joined(const QStringList &parts)
{
    return parts.join(QLatin1Char(' '));
}

QString inHex(const QByteArray &octets)
{
    QStringList pairs;
    for (const char octet : octets)
        pairs += QStringLiteral("%1").arg(static_cast<uchar>(octet), 2, 16, QLatin1Char('0'));
    return joined(pairs).toUpper();
}

QString inCharacters(const QByteArray &octets)
{
    QStringList characters;
    for (const char octet : octets)
        characters += QString(QLatin1Char(octet));
    return joined(characters);
}

QString flattened(const SecondReading &leaf)
{
    switch (leaf.holdsChildren ? ASN_TAG_ANY : leaf.tag) {
    case ASN_TAG_ANY:
        return {};
    case ASN_TAG_OBJECT_IDENTIFIER:
    case ASN_TAG_UTF8_STRING:
    case ASN_TAG_BMP_STRING:
        return textOf(leaf);
    case ASN_TAG_UTC_TIME:
        return textOf(leaf).section(QChar(0), 0, 0) + QLatin1Char(' ');
    case 0x13: // PrintableString
    case 0x16: // IA5String
    case 0x86:
        return inCharacters(leaf.content);
    case 0x82:
        return leaf.content.size() > 3 ? inCharacters(leaf.content) : inHex(leaf.content);
    default:
        return inHex(leaf.content);
    }
}

void flatten(const SecondReading &reading, int level, std::vector<certpolicy> &items)
{
    if (reading.children.empty())
        items.push_back({flattened(reading), level});
    for (const SecondReading &child : reading.children)
        flatten(child, level + 1, items);
}

/// The rows that a certificate ought to have, in as few words as docs/rows.md.
class ExpectedRows
{
public:
    explicit ExpectedRows(const SecondReading &certificate)
    {
        if (const SecondReading &tbs = certificate.child(0, ASN_TAG_SEQUENCE))
            addBasicFields(tbs);
        // Of the first child, whatever it is.
        for (const SecondReading &list : certificate.child(0).child(7).children)
            for (const SecondReading &extension : list.children)
                addExtension(extension);
    }

    const Rows &rows() const { return m_rows; }
    QString identityBeginning() const
    {
        return QStringLiteral(" %1:   ").arg(texts::shown(text_keys::kIdentityIssuedTo)) +
               (m_subject.commonName.isEmpty() ? m_subject.organization : m_subject.commonName) +
               QLatin1String("\n\n");
    }

private:
    struct Name
    {
        QString commonName;
        QString organization;
    };

    void add(QLatin1String key, const QString &value, const QString &full)
    {
        m_rows.push_back({texts::shown(key), value, full, detail_node::BasicField});
    }

    bool addBasicFields(const SecondReading &tbs)
    {
        std::size_t next = 0;
        if (const SecondReading &version = tbs.child(0, ASN_TAG_VERSION)) {
            if (!addVersion(version.child(0, ASN_TAG_INTEGER)))
                return false;
            next = 1;
        }
        Name issuer;
        return addSerialNumber(tbs.child(next, ASN_TAG_INTEGER)) &&
               addAlgorithm(tbs.child(next + 1, ASN_TAG_SEQUENCE)) &&
               addName(text_keys::kIssuer, tbs.child(next + 2, ASN_TAG_SEQUENCE), issuer) &&
               addTimes(tbs.child(next + 3, ASN_TAG_SEQUENCE)) &&
               addName(text_keys::kSubject, tbs.child(next + 4, ASN_TAG_SEQUENCE), m_subject) &&
               addKey(tbs.child(next + 5, ASN_TAG_SEQUENCE));
    }

    bool addVersion(const SecondReading &version)
    {
        if (!version)
            return false;
        const QByteArray &octets = version.content;
        const bool isNumber = octets.size() == 1 || octets.size() == 2 || octets.size() == 4;
        quint32 number = 0;
        for (int i = 0; isNumber && i < octets.size(); ++i)
            number |= quint32(static_cast<uchar>(octets.at(i))) << 8 * i;
        const QString shown = QStringLiteral("V%1").arg(static_cast<qint32>(number + 1));
        add(text_keys::kVersion, shown, shown);
        return true;
    }

    bool addSerialNumber(const SecondReading &serialNumber)
    {
        const QString hex = inHex(serialNumber.content).toLower().remove(QLatin1Char(' '));
        if (serialNumber)
            add(text_keys::kSerialNumber, hex, hex);
        return bool(serialNumber);
    }

    bool addAlgorithm(const SecondReading &signature)
    {
        const SecondReading &identifier = signature.child(0, ASN_TAG_OBJECT_IDENTIFIER);
        const QString name = texts::raw(textOf(identifier));
        if (identifier)
            add(text_keys::kSignatureAlgorithm, name, name);
        return bool(identifier);
    }

    bool addName(QLatin1String key, const SecondReading &name, Name &kept)
    {
        QStringList values;
        QString lines;
        for (const SecondReading &relative : name.children) {
            if (relative.tag != ASN_TAG_SET)
                return false;
            for (const SecondReading &attribute : relative.children) {
                if (attribute.tag != ASN_TAG_SEQUENCE)
                    return false;
                addAttribute(attribute, values, lines, kept);
            }
        }
        if (name)
            add(key, values.join(QLatin1Char(',')), lines);
        return bool(name);
    }

    static void addAttribute(const SecondReading &attribute, QStringList &values, QString &lines,
                             Name &kept)
    {
        const SecondReading &type = attribute.child(0, ASN_TAG_OBJECT_IDENTIFIER);
        if (!type || !attribute.child(1))
            return;
        const QString name = texts::raw(textOf(type));
        const QString value = texts::raw(textOf(attribute.child(1)));
        values.prepend(value);
        lines.prepend(name + QLatin1String("= ") + value + QLatin1Char('\n'));
        if (name == QLatin1String("CN"))
            kept.commonName = value;
        if (name == QLatin1String("O"))
            kept.organization = value;
    }

    bool addTimes(const SecondReading &validity)
    {
        const QString start = timeOf(validity.child(0));
        const QString end = timeOf(validity.child(1));
        if (start.isEmpty() || end.isEmpty())
            return false;
        addTime(text_keys::kValidFrom, start);
        addTime(text_keys::kValidTo, end);
        return true;
    }

    void addTime(QLatin1String key, const QString &digits)
    {
        const bool isNumber = std::all_of(digits.begin(), digits.end(), [](QChar c) {
            return c >= QLatin1Char('0') && c <= QLatin1Char('9');
        });
        const QDateTime written =
            QDateTime::fromString(isNumber ? digits : QString(), QStringLiteral("yyyyMMddhhmmss"));
        const QDateTime utc(written.date(), written.time(), Qt::UTC);
        constexpr qint64 kEightHours = 28800;
        const QString shown = display_date::shortText(utc.addSecs(kEightHours));
        add(key, shown, shown);
    }

    // As YYYYMMDDhhmmss; empty for another form.
    static QString timeOf(const SecondReading &time)
    {
        const QString text = textOf(time);
        if (!text.endsWith(QLatin1Char('Z')))
            return {};
        if (time.tag == ASN_TAG_GENERALIZED_TIME && text.size() == 15)
            return text.left(14);
        if (time.tag != ASN_TAG_UTC_TIME || text.size() != 13)
            return {};
        return QLatin1String(text.at(0) < QLatin1Char('5') ? "20" : "19") + text.left(12);
    }

    bool addKey(const SecondReading &info)
    {
        const SecondReading &algorithm = info.child(0, ASN_TAG_SEQUENCE);
        const SecondReading &identifier = algorithm.child(0, ASN_TAG_OBJECT_IDENTIFIER);
        const SecondReading &key = info.child(1, ASN_TAG_BIT_STRING);
        if (!identifier || !key)
            return false;
        const QString hex = inHex(key.content.startsWith('\0') ? key.content.mid(1) : key.content);
        add(text_keys::kPublicKey, texts::raw(textOf(identifier)),
            hex.isEmpty() ? hex : hex + QLatin1Char(' '));
        const SecondReading &curve = algorithm.child(1, ASN_TAG_OBJECT_IDENTIFIER);
        const QString name = curve ? texts::raw(textOf(curve)) : QString();
        if (!name.isEmpty())
            add(text_keys::kPublicKeyParameters, name, name);
        return true;
    }

    void addExtension(const SecondReading &extension)
    {
        const SecondReading &identifier = extension.child(0, ASN_TAG_OBJECT_IDENTIFIER);
        if (!identifier)
            return;
        const QString name = texts::raw(textOf(identifier));
        std::vector<certpolicy> items;
        for (std::size_t i = 1; i < extension.children.size(); ++i)
            flatten(extension.children[i], 1 - static_cast<int>(i), items);
        const QString text = wording(name, std::move(items));
        m_rows.push_back({texts::throughLocal8Bit(name), text, text, detail_node::Extension});
    }

    // The rule's own, of the values that were read here.
    static QString wording(const QString &name, std::vector<certpolicy> items)
    {
        std::vector<QString> values(items.size());
        std::transform(items.begin(), items.end(), values.begin(),
                       [](const certpolicy &item) { return item.text; });
        for (const RecognisedExtension &rule : kRecognisedExtensions) {
            if (texts::raw(rule.key) == name)
                return rule.fromItems ? rule.fromItems(items).text : rule.fromValues(values);
        }
        return extension_texts::anyOther(values);
    }

    Rows m_rows;
    Name m_subject;
};

void requireSame(const Rows &rows, const Rows &expected)
{
    require(rows.size() == expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        require(rows[i].name == expected[i].name);
        require(rows[i].value == expected[i].value);
        require(rows[i].full_value == expected[i].full_value);
        require(rows[i].kind == expected[i].kind);
    }
}

// Rows take a bounded number of characters for each octet: the words that stand around a value, and
// the longest text that the language file has.
void requireRoomIsLinear(const Said &said, qint64 octets)
{
    constexpr qint64 kMostForAnOctet = 100;
    constexpr qint64 kMostForNothing = 1000;
    qint64 characters = said.blocks.at(0).size() + said.blocks.at(1).size();
    for (const detail_node &row : said.rows)
        characters += row.name.size() + row.value.size() + row.full_value.size();
    require(characters <= kMostForAnOctet * octets + kMostForNothing);
}

void requireSecondReadingAgrees(const Said &said, const QByteArray &certificate)
{
    const SecondReading reading = SecondReader(certificate).root();
    if (reading.tag != ASN_TAG_SEQUENCE) // base64, PEM, or nothing
        return;
    const ExpectedRows expected(reading);
    requireSame(said.rows, expected.rows());
    require(said.blocks.at(c_pxcert::IdentityBlock)
                .startsWith(texts::throughLocal8Bit(expected.identityBeginning())));
}

} // namespace

// With core and language file: what the model says is what a second reading of the octets gives,
// and a second parse says the same once more.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static std::FILE *const nowhere = std::freopen("/dev/null", "w", stdout);
    require(nowhere);
    startApplication<QCoreApplication>("fuzz_model");
    c_language::GetLangPtr()->LANG_SetFileName(QString());
    require(texts::raw(text_keys::kIssuer) != text_keys::kIssuer); // the file is there

    const QByteArray certificate(reinterpret_cast<const char *>(data), static_cast<int>(size));
    c_pxcert model(nullptr);
    const Said first = said(model, certificate);
    requireRoomIsLinear(first, certificate.size());
    requireSecondReadingAgrees(first, certificate);

    const Said second = said(model, certificate);
    Rows twice = first.rows;
    twice.insert(twice.end(), first.rows.begin(), first.rows.end());
    requireSame(second.rows, twice);
    require(second.blocks.at(c_pxcert::IdentityBlock) == first.blocks.at(c_pxcert::IdentityBlock));
    return 0;
}
