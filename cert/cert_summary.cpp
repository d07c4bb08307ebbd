#include "cert/c_pxcert.h"

#include "cert/display_date.h"
#include "util/debug_line.h"
#include "util/text_keys.h"
#include "util/texts.h"

namespace {

QString headLine(QLatin1String key)
{
    return QLatin1Char(' ') + texts::shown(key);
}

void addName(SummaryBlock &block, QLatin1String key, const QString &name)
{
    block.say(headLine(key) + QLatin1String(":   "));
    block.quote(name);
    block.say(QStringLiteral("\n\n"));
}

const QString &nameOf(const QString &commonName, const QString &organization)
{
    return commonName.isEmpty() ? organization : commonName;
}

void addPurposeList(SummaryBlock &block, const std::vector<QString> &purposes)
{
    QString head = QStringLiteral(" %1\n      -%2\n      -%3");
    for (const QLatin1String key : {text_keys::kStatusPurposes, text_keys::kStatusProvesIdentity,
                                    text_keys::kStatusSecuresCommunication})
        head = head.arg(texts::shown(key));
    block.say(head);
    for (const QString &purpose : purposes) {
        block.say(QStringLiteral("\n      -"));
        block.quote(purpose);
    }
    block.say(QStringLiteral("\n\n"));
}

} // namespace

SummaryBlock c_pxcert::statusBlock() const
{
    const texts::AtOnce atOnce;
    SummaryBlock block;
    const bool isValid = isCertValid();
    if (!isValid || m_purposes.empty()) {
        block.say(headLine(isValid ? text_keys::kStatusValid : text_keys::kStatusNotValid));
        debugLine(block.text);
    } else {
        addPurposeList(block, m_purposes);
    }
    block.text = texts::throughLocal8Bit(block.text);
    return block;
}

SummaryBlock c_pxcert::identityBlock() const
{
    constexpr int kRoomForWords = 256;
    const texts::AtOnce atOnce;
    const QString &subject = nameOf(m_subjectCN, m_subjectO);
    const QString &issuer = nameOf(m_issuerCN, m_issuerO);
    SummaryBlock block;
    // At once: a name can be as long as a file may be.
    block.text.reserve(subject.size() + issuer.size() + kRoomForWords);
    addName(block, text_keys::kIdentityIssuedTo, subject);
    addName(block, text_keys::kIdentityIssuedBy, issuer);
    block.say(headLine(text_keys::kIdentityValidFrom) + display_date::datePart(m_validFrom) +
              headLine(text_keys::kIdentityValidTo) + QLatin1String("   ") +
              display_date::datePart(m_validTo));
    block.text = texts::throughLocal8Bit(block.text);
    return block;
}
