#include "cert/c_pxcert.h"

#include "cert/display_date.h"
#include "util/text_keys.h"
#include "util/texts.h"

#include <QDebug>
#include <QStringBuilder>

namespace {

QString headLine(QLatin1String key)
{
    return QStringLiteral(" %1").arg(texts::shown(key));
}

QString dateOf(const QDateTime &time)
{
    return display_date::datePart(display_date::shortText(time));
}

QString nameHead(QLatin1String key)
{
    return QStringLiteral(" %1:   ").arg(texts::shown(key));
}

const QString &nameOf(const QString &commonName, const QString &organization)
{
    return commonName.isEmpty() ? organization : commonName;
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

// Put together at once: a name can be as long as a file may be.
QString c_pxcert::identityBlock() const
{
    const QLatin1String nameEnd("\n\n");
    const QString block =
        nameHead(text_keys::kIdentityIssuedTo) % nameOf(m_subjectCN, m_subjectO) % nameEnd %
        nameHead(text_keys::kIdentityIssuedBy) % nameOf(m_issuerCN, m_issuerO) % nameEnd %
        headLine(text_keys::kIdentityValidFrom) % dateOf(m_notBefore) %
        headLine(text_keys::kIdentityValidTo) % QLatin1String("   ") % dateOf(m_notAfter);
    return texts::throughLocal8Bit(block);
}
