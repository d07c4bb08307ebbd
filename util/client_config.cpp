#include "util/client_config.h"

#include "util/file_reader.h"

#include <QDebug>
#include <QFile>
#include <tinyxml2.h>

namespace client_config {
namespace {

// The text up to the first element inside; comments and CDATA sections may lie in between.
QByteArray textOf(const tinyxml2::XMLElement &element)
{
    QByteArray text;
    for (const tinyxml2::XMLNode *node = element.FirstChild(); node && !node->ToElement();
         node = node->NextSibling()) {
        if (node->ToText())
            text += node->Value();
    }
    return text;
}

} // namespace

QString readLanguageCode(const QString &directory)
{
    const QString path = directory + QLatin1String("/settings/PXClientConfig.dll");
    qDebug() << path;
    const QByteArray name = QFile::encodeName(path);
    QByteArray xml;
    file_reader::readWhole(name.constData(), xml, file_reader::kNoPatience);
    // Deliberate: the line is for what exists, also when it can't be read.
    if (file_reader::exists(name.constData()))
        qDebug() << path << "read succ";
    QString code;
    languageCodeOf(xml.constData(), code);
    return code;
}

bool languageCodeOf(const char *xml, QString &code)
{
    tinyxml2::XMLDocument document;
    if (document.Parse(xml) != tinyxml2::XML_SUCCESS)
        return false;
    const tinyxml2::XMLConstHandle root(document.RootElement());
    const tinyxml2::XMLElement *client =
        root.FirstChildElement("Language").FirstChildElement("PXClient").ToElement();
    const QByteArray text = client ? textOf(*client) : QByteArray();
    if (text.isEmpty())
        return false;
    code = QString::fromLatin1(text);
    return true;
}

} // namespace client_config
