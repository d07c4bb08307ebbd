#include "fuzz_application.h"
#include "fuzz_target.h"
#include "util/ini_table.h"
#include "util/plain_ini.h"
#include "util/qt_compat.h"

#include <algorithm>
#include <QCoreApplication>
#include <QFile>
#include <QSet>
#include <QSettings>
#include <QTemporaryDir>
#include <vector>

namespace {

using Question = QPair<QString, QString>; // section and key

/// Files of one content. Each copy has a name that was never used: `QSettings` keeps what it parsed
/// under a name, and parses no more of a file than it is asked for.
class Copies
{
public:
    explicit Copies(const QByteArray &content)
        : m_content(content)
    {
    }
    ~Copies()
    {
        for (const QString &name : m_names)
            QFile::remove(name);
    }
    Q_DISABLE_COPY(Copies)

    QString next()
    {
        static const QTemporaryDir directory;
        static int count = 0;
        QFile file(directory.filePath(QString::number(++count)));
        require(file.open(QIODevice::WriteOnly) && file.write(m_content) == m_content.size());
        m_names.push_back(file.fileName());
        return file.fileName();
    }

private:
    QByteArray m_content;
    std::vector<QString> m_names;
};

QString readBySettings(const QString &path, const Question &question)
{
    QSettings settings(path, QSettings::IniFormat);
    readAsUtf8(settings);
    return settings.value(QStringLiteral("/%1/%2").arg(question.first, question.second)).toString();
}

// Some that the file answers, and one that it may not.
QSet<Question> questionsFor(const QString &path)
{
    constexpr int kMost = 2;
    QSettings settings(path, QSettings::IniFormat);
    readAsUtf8(settings);
    QSet<Question> questions = {{QStringLiteral("CN"), QStringLiteral("K")}};
    const QStringList keys = settings.allKeys();
    const QStringList last = keys.mid(std::max(0, static_cast<int>(keys.size()) - kMost));
    for (const QString &key : last) {
        questions.insert({key.section(QLatin1Char('/'), 0, 0), key.section(QLatin1Char('/'), 1)});
        questions.insert({QStringLiteral("General"), key});
    }
    return questions;
}

void requireSameAnswers(Copies &copies, const QSet<Question> &questions)
{
    const QString path = copies.next();
    for (const Question &question : questions)
        require(ini_table::lookup(path, question.first, question.second) ==
                readBySettings(copies.next(), question));
}

// What is taken for plain holds no texts but the file's own characters, in their order.
void requirePlainIsPlain(const QByteArray &content, const QSet<Question> &questions)
{
    PlainIni plain;
    if (!plain.read(content))
        return;
    const QString all = QString::fromUtf8(content.constData(), content.size());
    for (const Question &question : questions)
        require(all.contains(plain.value(question.first, question.second)));
}

} // namespace

// Each text of a language file is what settings that were made for it alone read.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    startApplication<QCoreApplication>("fuzz_language_file");
    const QByteArray content(reinterpret_cast<const char *>(data), static_cast<int>(size));
    Copies copies(content);
    const QSet<Question> questions = questionsFor(copies.next());
    requireSameAnswers(copies, questions);
    requirePlainIsPlain(content, questions);
    return 0;
}
