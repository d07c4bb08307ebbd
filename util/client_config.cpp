#include "util/client_config.h"

#include "util/file_reader.h"

#include <QDebug>
#include <QFile>
#include <tinyxml2.h>

namespace client_config {

QString readLanguageCode(const QString &directory)
{
    const QString path = directory + QLatin1String("/settings/PXClientConfig.dll");
    qDebug() << path;
    QByteArray xml;
    if (file_reader::readWhole(QFile::encodeName(path).constData(), xml))
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
    const char *text = client ? client->GetText() : nullptr;
    if (!text)
        return false;
    code = QString::fromLatin1(text);
    return true;
}

} // namespace client_config
