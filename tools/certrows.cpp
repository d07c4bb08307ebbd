// certrows [--verbose] FILE...  prints what the certificate model says of each file, one JSON
// object
//                               a line
// certrows --section            prints the language section in force
//
// Standard output carries that alone. What the libraries print besides is dropped, or goes to
// standard error for who asks for it.

#include "cert/c_pxcert.h"
#include "core/start_directory.h"
#include "util/c_language.h"

#include <cstdio>
#include <cstring>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

// Takes standard output for the results and leaves standard error, or nothing, in its place for
// everybody else.
bool openResults(QFile &results, bool verbose)
{
    const int output = ::dup(STDOUT_FILENO);
    const bool left = verbose ? ::dup2(STDERR_FILENO, STDOUT_FILENO) >= 0
                              : std::freopen("/dev/null", "w", stdout) != nullptr;
    return output >= 0 && left &&
           results.open(output, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle);
}

// A text as the toolkit's writer has it, piece by piece: one can be as long as a file may be, and
// the writer would hold it three times over.
void writeText(QFile &results, const QString &text)
{
    constexpr int kPiece = 65536;
    constexpr int kFrame = 2; // [" and "]
    results.write("\"");
    for (int begin = 0; begin < text.size();) {
        QString piece = text.mid(begin, kPiece);
        if (begin + piece.size() < text.size() && piece.at(piece.size() - 1).isHighSurrogate())
            piece.chop(1);
        begin += static_cast<int>(piece.size());
        const QByteArray json = QJsonDocument(QJsonArray{piece}).toJson(QJsonDocument::Compact);
        results.write(json.constData() + kFrame, json.size() - 2 * kFrame);
    }
    results.write("\"");
}

void writeBlock(QFile &results, const QString &text, int block)
{
    results.write("[");
    writeText(results, text);
    results.write(',' + QByteArray::number(block) + ']');
}

void writeRow(QFile &results, const detail_node &row)
{
    results.write("{\"full\":");
    writeText(results, row.full_value);
    results.write(",\"kind\":" + QByteArray::number(row.kind) + ",\"name\":");
    writeText(results, row.name);
    results.write(",\"value\":");
    writeText(results, row.value);
    results.write("}");
}

template <typename Items, typename Write>
void writeArray(QFile &results, const Items &items, const Write &write)
{
    const char *separator = "[";
    for (const auto &item : items) {
        results.write(separator);
        write(item);
        separator = ",";
    }
    results.write(items.empty() ? "[]" : "]");
}

// Reads the certificate at `path`, which is absolute; `name` is how the caller called it.
void writeResult(QFile &results, const QString &name, const QByteArray &path)
{
    std::vector<std::pair<QString, int>> normal;
    std::vector<detail_node> rows;
    c_pxcert certificate(nullptr);
    QObject::connect(&certificate, &c_pxcert::result_normal,
                     [&](const QString &text, int block) { normal.emplace_back(text, block); });
    QObject::connect(&certificate, &c_pxcert::result_detail,
                     [&](const std::vector<detail_node> &all) { rows = all; });
    const bool loaded = certificate.loadfile(path.constData());
    results.write("{\"file\":");
    writeText(results, name);
    results.write(loaded ? ",\"loaded\":true,\"normal\":" : ",\"loaded\":false,\"normal\":");
    writeArray(results, normal, [&](const std::pair<QString, int> &block) {
        writeBlock(results, block.first, block.second);
    });
    results.write(",\"rows\":");
    writeArray(results, rows, [&](const detail_node &row) { writeRow(results, row); });
    results.write("}\n");
    results.flush();
}

} // namespace

int main(int argc, char **argv)
{
    QFile results;
    const bool verbose = argc > 1 && std::strcmp(argv[1], "--verbose") == 0;
    if (!verbose)
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    if (!openResults(results, verbose)) {
        std::perror("certrows");
        return 1;
    }
    const QDir start(QFile::decodeName(startDirectory()));
    QCoreApplication application(argc, argv);
    c_language::GetLangPtr()->LANG_SetFileName(QString());

    const QStringList arguments = application.arguments().mid(verbose ? 2 : 1);
    if (arguments == QStringList{QStringLiteral("--section")}) {
        results.write(c_language::GetLangPtr()->section().toLatin1() + '\n');
        return 0;
    }
    for (const QString &name : arguments)
        writeResult(results, name, QFile::encodeName(start.absoluteFilePath(name)));
    return 0;
}
