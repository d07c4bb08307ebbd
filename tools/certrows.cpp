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
#include <QJsonObject>
#include <QLoggingCategory>
#include <unistd.h>

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

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray toJson(const detail_node &row)
{
    return compact({{QStringLiteral("name"), row.name},
                    {QStringLiteral("value"), row.value},
                    {QStringLiteral("full"), row.full_value},
                    {QStringLiteral("kind"), row.kind}});
}

// Reads the certificate at `path`, which is absolute; `name` is how the caller called it. Row by
// row, because an object of a million of them takes more memory than all else.
void writeResult(QFile &results, const QString &name, const QByteArray &path)
{
    QJsonArray normal;
    std::vector<detail_node> rows;
    c_pxcert certificate(nullptr);
    QObject::connect(&certificate, &c_pxcert::result_normal, [&](const QString &text, int block) {
        normal.append(QJsonArray{text, block});
    });
    QObject::connect(&certificate, &c_pxcert::result_detail,
                     [&](const std::vector<detail_node> &all) { rows = all; });
    const bool loaded = certificate.loadfile(path.constData());
    const QByteArray head = compact({{QStringLiteral("file"), name},
                                     {QStringLiteral("loaded"), loaded},
                                     {QStringLiteral("normal"), normal}});
    results.write(head.chopped(1) + ",\"rows\":[");
    const char *separator = "";
    for (const detail_node &row : rows) {
        results.write(separator);
        results.write(toJson(row));
        separator = ",";
    }
    results.write("]}\n");
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
