// How the window shows a certificate's texts and rows.

#include "app/mainwindow.h"

#include "app/certificate_argument.h"
#include "app/table_rows.h"
#include "ui_mainwindow.h"

#include <iterator>
#include <QDebug>

namespace {

// The selector's first entry shows all rows, the others those of one kind each.
bool isSelected(const detail_node &node, int entry)
{
    constexpr int kAllRows = 0;
    return entry == kAllRows || node.kind == entry - 1;
}

bool endsWord(QChar c)
{
    return c.isSpace() && c.decompositionTag() != QChar::NoBreak;
}

// Whether a stretch of the text that can't break is longer than any field that means something.
bool hasEndlessWord(const QString &text)
{
    constexpr int kLongestWord = 4096;
    int length = 0;
    for (const QChar c : text) {
        length = endsWord(c) ? 0 : length + 1;
        if (length > kLongestWord)
            return true;
    }
    return false;
}

// Of what nobody can read the beginning will do: laid out, a line takes 400 octets of memory.
constexpr int kMostShown = 1024 * 1024;

QString beginning(const QString &text, int most = kMostShown)
{
    return text.size() <= most ? text : text.left(most) + QChar(0x2026);
}

bool fitTogether(const QStringList &texts)
{
    qint64 characters = texts.size() - 1;
    for (const QString &text : texts)
        characters += text.size();
    return characters <= kMostShown;
}

// A paragraph each: as one text, since a million that are appended one by one take minutes. What is
// too long together is cut, each to the same length, so that none hides those behind it.
QString paragraphs(const QStringList &texts)
{
    constexpr int kMostParagraphs = kMostShown / 4;
    const auto count = qMin(kMostParagraphs, static_cast<int>(texts.size()));
    const int most = fitTogether(texts) ? kMostShown : kMostShown / count;
    QString all;
    for (int i = 0; i < count; ++i) {
        if (!all.isEmpty())
            all += QChar(QChar::ParagraphSeparator);
        all += beginning(texts.at(i), most);
    }
    return all;
}

// Appends the text as a paragraph of its own, and shows where the box begins.
void appendText(QPlainTextEdit *box, const QString &text)
{
    // Looking for the end of a word line by line takes the square of its length: a minute at 1 MB.
    if (hasEndlessWord(text))
        box->setWordWrapMode(QTextOption::WrapAnywhere);
    box->appendPlainText(text);
    box->moveCursor(QTextCursor::Start);
}

void clearText(QPlainTextEdit *box)
{
    box->clear();
    box->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
}

} // namespace

bool MainWindow::loadcertfile(const char *path)
{
    const QByteArray argument = path;
    const bool loaded = certificate_argument::isCertificate(argument)
                            ? m_cert.parse_cert(argument)
                            : m_cert.loadfile(certificate_argument::filePath(argument).constData());
    if (loaded)
        qDebug("mainwindow::loadcertfile end");
    return loaded;
}

void MainWindow::result_normal(const QString &snormal, int type)
{
    appendText(type == c_pxcert::StatusBlock ? ui->plainTextEdit_normal
                                             : ui->plainTextEdit_normal_2,
               beginning(snormal));
}

void MainWindow::result_detail(std::vector<detail_node> detail_data)
{
    const std::size_t count = detail_data.size();
    m_nodes.insert(m_nodes.begin(), std::make_move_iterator(detail_data.begin()),
                   std::make_move_iterator(detail_data.end()));
    // Whoever hears of a new row in the table may ask for its full value: it is known by then.
    for (std::size_t i = 0; i < count; ++i)
        appendRow(ui->tableWidget_detailinfo, m_nodes[i]);
}

void MainWindow::on_comboBox_selection_currentIndexChanged(int index)
{
    ui->tableWidget_detailinfo->setRowCount(0);
    clearText(ui->plainTextEdit_detail_2);
    for (const detail_node &node : m_nodes) {
        if (isSelected(node, index))
            appendRow(ui->tableWidget_detailinfo, node);
    }
}

void MainWindow::on_tableWidget_detailinfo_clicked(const QModelIndex &index)
{
    clearText(ui->plainTextEdit_detail_2);
    const QString name = ui->tableWidget_detailinfo->item(index.row(), kNameColumn)->text();
    QStringList values;
    for (const detail_node &node : m_nodes) {
        if (node.name == name)
            values += node.full_value;
    }
    appendText(ui->plainTextEdit_detail_2, paragraphs(values));
}

void MainWindow::on_tabWidget_currentChanged(int index)
{
    qDebug() << index;
    if (index == 0 || index == 1)
        m_line->setVisible(index == 0);
}

void MainWindow::on_tabWidget_tabBarClicked(int index)
{
    qDebug() << index;
}
