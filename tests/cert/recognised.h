#pragma once

#include "cert/recognised_extensions.h"
#include "util/c_util.h"
#include "util/qt_compat.h"

#include <QSettings>
#include <QStringList>

/// The recognised extensions as the language file knows them, so that no test lists them.
namespace recognised {

/// All identifiers that the section OID names.
inline QStringList allIdentifiers()
{
    QSettings file(QStringLiteral(PX_BINARY_DIR "/languages/PXViewCertTool_Lang.ini"),
                   QSettings::IniFormat);
    readAsUtf8(file);
    file.beginGroup(QStringLiteral("OID"));
    return file.allKeys();
}

/// What the section OID says of an identifier; empty when it says nothing.
inline QString underOid(const QString &identifier)
{
    QString value;
    c_util().GetKeyValue("PXViewCertTool_Lang.ini", QStringLiteral("OID"), identifier, value);
    return value;
}

/// The first identifier that has the extension's key; empty when none has.
inline QString identifierOf(const RecognisedExtension &extension)
{
    const QStringList identifiers = allIdentifiers();
    for (const QString &identifier : identifiers) {
        if (underOid(identifier) == extension.key)
            return identifier;
    }
    return {};
}

} // namespace recognised
