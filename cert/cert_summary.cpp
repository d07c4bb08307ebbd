#include "cert/c_pxcert.h"

#include "cert/display_date.h"
#include "util/text_keys.h"
#include "util/texts.h"

#include <QDebug>

namespace {

QString headLine(QLatin1String key)
{
    return QStringLiteral(" %1").arg(texts::shown(key));
}

QString dateOf(const QDateTime &time)
{
    return display_date::datePart(display_date::shortText(time));
}

QString nameLine(QLatin1String key, const QString &commonName, const QString &organization)
{
    return QStringLiteral(" %1:   ").arg(texts::shown(key)) +
           (commonName.isEmpty() ? organization : commonName) + QLatin1String("\n\n");
}

} // namespace

QString c_pxcert::statusBlock() const
{
    QString block;
    const bool isValid = isCertValid();
    if (!isValid || m_purposes.empty()) {
        block = headLine(isValid ? text_keys::kStatusValid : text_keys::kStatusNotValid);
        qDebug() << block;
    } else {
        block = QStringLiteral(" %1\n      -%2\n      -%3");
        for (const QLatin1String key :
             {text_keys::kStatusPurposes, text_keys::kStatusProvesIdentity,
              text_keys::kStatusSecuresCommunication})
            block = block.arg(texts::shown(key));
        for (const QString &purpose : m_purposes)
            block += QLatin1String("\n      -") + purpose;
        block += QLatin1String("\n\n");
    }
    return texts::throughLocal8Bit(block);
}

QString c_pxcert::identityBlock() const
{
    const QString block = nameLine(text_keys::kIdentityIssuedTo, m_subjectCN, m_subjectO) +
                          nameLine(text_keys::kIdentityIssuedBy, m_issuerCN, m_issuerO) +
                          headLine(text_keys::kIdentityValidFrom) + dateOf(m_notBefore) +
                          headLine(text_keys::kIdentityValidTo) + QLatin1String("   ") +
                          dateOf(m_notAfter);
    return texts::throughLocal8Bit(block);
}
