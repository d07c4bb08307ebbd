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
QString readablePart(const QString &text)
{
    constexpr int kMostShown = 1024 * 1024;
    return text.size() <= kMostShown ? text : text.left(kMostShown) + QChar(0x2026);
}

// Appends the text as a paragraph of its own; the box shows its beginning.
void appendText(QPlainTextEdit *box, const QString &whole)
{
    const QString text = readablePart(whole);
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
               snormal);
}

void MainWindow::result_detail(std::vector<detail_node> detail_data)
{
    for (const detail_node &node : detail_data)
        appendRow(ui->tableWidget_detailinfo, node);
    m_nodes.insert(m_nodes.begin(), std::make_move_iterator(detail_data.begin()),
                   std::make_move_iterator(detail_data.end()));
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
    QString paragraphs; // appended at once: one by one, a million rows of a name take minutes
    for (const detail_node &node : m_nodes) {
        if (node.name != name)
            continue;
        if (!paragraphs.isEmpty())
            paragraphs += QChar(QChar::ParagraphSeparator);
        paragraphs += node.full_value;
    }
    appendText(ui->plainTextEdit_detail_2, paragraphs);
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
