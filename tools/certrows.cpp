// certrows FILE...   prints what the certificate model says of each file, one JSON object a line
// certrows --section prints the language section in force
//
// Standard output carries that alone: what the libraries print goes to standard error.

#include "cert/c_pxcert.h"
#include "core/start_directory.h"
#include "util/c_language.h"

#include <cstdio>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <unistd.h>

namespace {

// Takes standard output for the results and leaves standard error in its place for everybody else.
bool openResults(QFile &results)
{
    const int output = ::dup(STDOUT_FILENO);
    return output >= 0 && ::dup2(STDERR_FILENO, STDOUT_FILENO) >= 0 &&
           results.open(output, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle);
}

QJsonArray toJson(const std::vector<detail_node> &rows)
{
    QJsonArray array;
    for (const detail_node &row : rows) {
        array.append(QJsonObject{{QStringLiteral("name"), row.name},
                                 {QStringLiteral("value"), row.value},
                                 {QStringLiteral("full"), row.full_value},
                                 {QStringLiteral("kind"), row.kind}});
    }
    return array;
}

// `path` is absolute; `name` is how the caller called it.
QJsonObject resultOf(const QString &name, const QByteArray &path)
{
    QJsonArray normal;
    QJsonArray rows;
    c_pxcert certificate(nullptr);
    QObject::connect(&certificate, &c_pxcert::result_normal, [&](const QString &text, int block) {
        normal.append(QJsonArray{text, block});
    });
    QObject::connect(&certificate, &c_pxcert::result_detail,
                     [&](const std::vector<detail_node> &all) { rows = toJson(all); });
    const bool loaded = certificate.loadfile(path.constData());
    return {{QStringLiteral("file"), name},
            {QStringLiteral("loaded"), loaded},
            {QStringLiteral("normal"), normal},
            {QStringLiteral("rows"), rows}};
}

} // namespace

int main(int argc, char **argv)
{
    QFile results;
    if (!openResults(results)) {
        std::perror("certrows");
        return 1;
    }
    const QDir start(QFile::decodeName(startDirectory()));
    QCoreApplication application(argc, argv);
    c_language::GetLangPtr()->LANG_SetFileName(QString());

    const QStringList arguments = application.arguments().mid(1);
    if (arguments == QStringList{QStringLiteral("--section")}) {
        results.write(c_language::GetLangPtr()->section().toLatin1() + '\n');
        return 0;
    }
    for (const QString &name : arguments) {
        const QByteArray path = QFile::encodeName(start.absoluteFilePath(name));
        results.write(QJsonDocument(resultOf(name, path)).toJson(QJsonDocument::Compact) + '\n');
        results.flush();
    }
    return 0;
}
