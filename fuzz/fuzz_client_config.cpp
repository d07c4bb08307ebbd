#include "fuzz_application.h"
#include "fuzz_target.h"
#include "util/client_config.h"

#include <algorithm>
#include <QXmlStreamReader>

namespace {

const QString kUntouched = QStringLiteral("untouched");

// Whether two readers of XML have to agree: there are no references, nothing is declared or meant
// for a program, and it is not so deep that one of them gives up.
bool isPlain(const QByteArray &xml)
{
    constexpr int kMostElements = 50;
    const bool isAscii =
        std::all_of(xml.begin(), xml.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return isAscii && !xml.contains('&') && !xml.contains("<?") && !xml.contains("<!D") &&
           xml.count('<') < kMostElements;
}

// The first element of this name on the level that the reader is in.
bool enter(QXmlStreamReader &reader, QLatin1String name)
{
    while (reader.readNextStartElement()) {
        if (reader.qualifiedName() == name)
            return true;
        reader.skipCurrentElement();
    }
    return false;
}

// What stands before the first element inside, blanks between comments aside.
QString textInside(QXmlStreamReader &reader)
{
    QString text;
    while (!reader.atEnd() && reader.readNext() != QXmlStreamReader::EndElement &&
           !reader.isStartElement()) {
        if (reader.isCharacters() && (reader.isCDATA() || !reader.isWhitespace()))
            text += reader.text();
    }
    return text;
}

QString readSecondly(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    reader.setNamespaceProcessing(false);
    if (!reader.readNextStartElement() || !enter(reader, QLatin1String("Language")) ||
        !enter(reader, QLatin1String("PXClient")))
        return {};
    return textInside(reader);
}

bool isWellFormed(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

void requireSecondReadingAgrees(const QByteArray &xml)
{
    QString code = kUntouched;
    const bool isFound = client_config::languageCodeOf(xml.constData(), code);
    require(isFound ? !code.isEmpty() && code.size() <= xml.size() : code == kUntouched);
    if (!isPlain(xml) || !isWellFormed(xml))
        return;
    const QString expected = readSecondly(xml);
    require(isFound == !expected.isEmpty());
    require(!isFound || code == expected);
}

// Any text that is put into a configuration before an element comes out of it.
void requireComesBack(const QByteArray &text)
{
    const QString escaped = QString::fromLatin1(text).toHtmlEscaped();
    const QByteArray xml = "<a><b/><Language><!-- c --><PXClient>" + escaped.toLatin1() +
                           "<b/>no more</PXClient></Language></a>";
    QString code = kUntouched;
    const bool isFound = client_config::languageCodeOf(xml.constData(), code);
    require(isFound == !text.trimmed().isEmpty());
    require(code == (isFound ? QString::fromLatin1(text) : kUntouched));
}

} // namespace

// The language code of any configuration, whose text ends at its first NUL.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    const QByteArray xml(text.c_str());
    requireSecondReadingAgrees(xml);
    if (!xml.contains('\r')) // line ends become line feeds
        requireComesBack(xml);
    return 0;
}
