// bench_certificates FILE... reads the certificates (PEM) over and over, by this project's code and
// by its peers' in turn, and prints for each operation its name and the median time of one pass
// over all files, in microseconds a certificate.

#include "asn/asn_block.h"
#include "bench/certificates/peers.h"
#include "cert/c_pxcert.h"
#include "core/start_directory.h"
#include "util/c_language.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRounds = 31;

QByteArray derOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        std::abort();
    const QList<QByteArray> lines = file.readAll().split('\n');
    QByteArray text;
    for (const QByteArray &line : lines) {
        if (!line.startsWith("-----"))
            text += line;
    }
    return QByteArray::fromBase64(text);
}

std::size_t buildTree(const QByteArray &der)
{
    const AsnBlockPtr tree(ASNAddByData(nullptr,
                                        reinterpret_cast<const unsigned char *>(der.constData()),
                                        static_cast<unsigned>(der.size())));
    return tree ? 1 : 0;
}

// As the window takes it: both blocks and all rows arrive.
std::size_t parse(const QByteArray &der)
{
    std::size_t rows = 0;
    c_pxcert certificate(nullptr);
    QObject::connect(&certificate, &c_pxcert::result_normal,
                     [&](const QString & /*text*/, int /*block*/) { ++rows; });
    QObject::connect(&certificate, &c_pxcert::result_detail,
                     [&](const std::vector<detail_node> &all) { rows += all.size(); });
    certificate.parse_cert(der);
    return rows;
}

struct Operation
{
    const char *name;
    std::size_t (*run)(const QByteArray &der); ///< 0 when it failed
    std::vector<double> times;
};

template <std::size_t (*read)(const unsigned char *, std::size_t)>
std::size_t byPeer(const QByteArray &der)
{
    return read(reinterpret_cast<const unsigned char *>(der.constData()),
                static_cast<std::size_t>(der.size()));
}

double timeOfPass(const Operation &operation, const std::vector<QByteArray> &certificates)
{
    const auto begin = std::chrono::steady_clock::now();
    for (const QByteArray &certificate : certificates) {
        if (operation.run(certificate) == 0) {
            std::fprintf(stderr, "bench_certificates: %s fails\n", operation.name);
            std::exit(1);
        }
    }
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
    return time.count() / static_cast<double>(certificates.size());
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    // What the libraries say on the way is part of the work, but nobody reads it.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    FILE *results = ::fdopen(::dup(STDOUT_FILENO), "w");
    if (!results || !std::freopen("/dev/null", "w", stdout))
        return 1;
    const QDir start(QFile::decodeName(startDirectory()));
    QCoreApplication application(argc, argv);
    c_language::GetLangPtr()->LANG_SetFileName(QString());
    std::vector<QByteArray> certificates;
    const QStringList files = QCoreApplication::arguments().mid(1);
    for (const QString &file : files)
        certificates.push_back(derOf(start.absoluteFilePath(file)));

    Operation operations[] = {
        {"block-tree", buildTree, {}},
        {"parse_cert", parse, {}},
        {"gnutls-import", byPeer<gnutlsImport>, {}},
        {"gnutls-import-print", byPeer<gnutlsImportAndPrint>, {}},
        {"openssl-parse", byPeer<opensslParse>, {}},
        {"openssl-parse-print", byPeer<opensslParseAndPrint>, {}},
    };
    for (int round = 0; round < kRounds; ++round) {
        for (Operation &operation : operations)
            operation.times.push_back(timeOfPass(operation, certificates));
    }
    for (const Operation &operation : operations)
        std::fprintf(results, "%s %.2f\n", operation.name, median(operation.times));
    return 0;
}
