#include "cert/c_pxcert.h"

#include "asn/pxasn_element.h"
#include "cert/certificate_input.h"
#include "util/c_util.h"
#include "util/memory_edge.h"

#include <cstddef>
#include <QDebug>
#include <utility>

namespace {

constexpr int kTbsCertificate = 0;
constexpr int kExtensions = 7; // of a v3 certificate without unique identifiers
constexpr int kFieldsWithoutExtensions = 6;

// A date-time as its clock shows it, to the second, whatever zone it is in.
std::pair<QDate, QTime> clockSecond(const QDateTime &time)
{
    const QTime clock = time.time();
    return {time.date(), QTime(clock.hour(), clock.minute(), clock.second())};
}

} // namespace

c_pxcert::c_pxcert(QObject *parent)
    : QObject(parent)
{
    qRegisterMetaType<detail_node>("detail_node");
    qRegisterMetaType<std::vector<detail_node>>("std::vector<detail_node>");
}

bool c_pxcert::loadfile(const char *path)
{
    bool loaded = false;
    memory_edge::suffices([&] {
        QByteArray content;
        if (!c_util().readfile(path, content) || content.isEmpty())
            return;
        QByteArray octets = certificate_input::certificateOctets(std::move(content));
        loaded = parse_cert(std::move(octets));
    });
    return loaded;
}

bool c_pxcert::parse_cert(QByteArray certificate)
{
    const auto rows = static_cast<std::ptrdiff_t>(m_rows.size());
    const auto purposes = static_cast<std::ptrdiff_t>(m_purposes.size());
    const bool sufficed = memory_edge::suffices([&] {
        readCertificate(std::move(certificate));
        qDebug("parse cert end");
        emitResults();
        qDebug("parse cert end2");
    });
    if (!sufficed) {
        m_rows.erase(m_rows.begin() + rows, m_rows.end());
        m_purposes.erase(m_purposes.begin() + purposes, m_purposes.end());
    }
    return sufficed;
}

void c_pxcert::emitResults()
{
    tell(StatusBlock, statusBlock());
    tell(IdentityBlock, identityBlock());
    emit result_detail(m_rows);
}

// The octets go as soon as the document has its own, and the document before the texts are made of
// what was read: each can be as long as a file may be.
void c_pxcert::readCertificate(QByteArray certificate)
{
    PXAsn document(nullptr);
    certificate_input::open(document, certificate);
    certificate.clear();

    parseTBSCertificate_basedata(&document);
    const PXAsnElement tbs = PXAsnElement(&document).getChild(kTbsCertificate, ASN_TAG_ANY);
    if (tbs.getChildCount() > kFieldsWithoutExtensions)
        readExtensions(tbs.getChild(kExtensions, ASN_TAG_ANY));
}

bool c_pxcert::isCertValid() const
{
    // Deliberate: a bound that could not be read does not make the certificate invalid.
    const auto now = clockSecond(QDateTime::currentDateTime());
    const bool expired = m_notAfter.isValid() && clockSecond(m_notAfter) < now;
    const bool notYetValid = m_notBefore.isValid() && clockSecond(m_notBefore) > now;
    return !expired && !notYetValid;
}

void c_pxcert::tell(Block number, SummaryBlock block)
{
    m_ownLineFeeds[number] = std::move(block.ownLineFeeds);
    emit result_normal(block.text, number);
}

const std::vector<bool> &c_pxcert::ownLineFeeds(int block) const
{
    return m_ownLineFeeds[block == StatusBlock ? StatusBlock : IdentityBlock];
}

void c_pxcert::sendmsg(const QString &, const QString &) {}

void c_pxcert::add_node(const QString &name, const QString &value)
{
    m_rows.push_back({name, value, value, detail_node::BasicField});
}
