#include "cert/c_pxcert.h"

#include "cert/display_date.h"
#include "util/c_language.h"

#include <QDebug>

namespace {

QString text(const char *key)
{
    return displayText(QLatin1String(key));
}

QString headLine(const char *key)
{
    return QStringLiteral(" %1").arg(text(key));
}

QString dateOf(const QDateTime &time)
{
    return display_date::shortText(time).section(QLatin1Char(' '), 0, 0);
}

QString nameLine(const char *key, const QString &commonName, const QString &organization)
{
    return QStringLiteral(" %1:   ").arg(text(key)) +
           (commonName.isEmpty() ? organization : commonName) + QLatin1String("\n\n");
}

} // namespace

QString c_pxcert::statusBlock() const
{
    QString block;
    const bool isValid = isCertValid();
    if (!isValid || m_purposes.empty()) {
        block = headLine(isValid ? "PXCERTREAD_0006" : "PXCERTREAD_0075");
        qDebug() << block;
    } else {
        block = QStringLiteral(" %1\n      -%2\n      -%3");
        for (const char *key : {"PXCERTREAD_0003", "PXCERTREAD_0004", "PXCERTREAD_0005"})
            block = block.arg(text(key));
        for (const QString &purpose : m_purposes)
            block += QLatin1String("\n      -") + purpose;
        block += QLatin1String("\n\n");
    }
    return throughLocal8Bit(block);
}

QString c_pxcert::identityBlock() const
{
    const QString block = nameLine("PXCERTREAD_0007", m_subjectCN, m_subjectO) +
                          nameLine("PXCERTREAD_0008", m_issuerCN, m_issuerO) +
                          headLine("PXCERTREAD_0009") + dateOf(m_notBefore) +
                          headLine("PXCERTREAD_0010") + QLatin1String("   ") + dateOf(m_notAfter);
    return throughLocal8Bit(block);
}
