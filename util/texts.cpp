#include "util/texts.h"

#include "util/c_language.h"
#include "util/c_util.h"

namespace texts {

QString raw(const QString &key)
{
    return c_language::GetLangPtr()->GetValue(key);
}

QString shown(const QString &key)
{
    return throughLocal8Bit(raw(key));
}

QString throughLocal8Bit(const QString &text)
{
    const QByteArray local = text.toLocal8Bit();
    return QString::fromLocal8Bit(local.constData(), local.size());
}

QString nameOfIdentifier(const QString &dotted)
{
    QString name;
    const bool isNamed =
        c_util().GetKeyValue(c_language::kDefaultFileName, QStringLiteral("OID"), dotted, name);
    return isNamed ? name : dotted;
}

} // namespace texts
