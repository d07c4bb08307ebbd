// How the window shows a certificate's texts and rows.

#include "app/mainwindow.h"

#include "app/certificate_argument.h"
#include "app/table_rows.h"
#include "ui_mainwindow.h"
#include "util/memory_edge.h"

#include <iterator>
#include <QDebug>

namespace {

// The selector's first entry shows all rows, the others those of one kind each.
bool isSelected(const detail_node &node, int entry)
{
    constexpr int kAllRows = 0;
    return entry == kAllRows || node.kind == entry - 1;
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
    else
        showNothing(); // what came before memory ran out may be half of it
    return loaded;
}

void MainWindow::showNothing()
{
    m_nodes.clear();
    ui->tableWidget_detailinfo->setRowCount(0);
    for (TextBox *box :
         {ui->plainTextEdit_normal, ui->plainTextEdit_normal_2, ui->plainTextEdit_detail_2})
        box->clearTexts();
}

void MainWindow::result_normal(const QString &snormal, int type)
{
    TextBox *box =
        type == c_pxcert::StatusBlock ? ui->plainTextEdit_normal : ui->plainTextEdit_normal_2;
    box->appendLines(snormal, m_cert.ownLineFeeds(type));
    if (type == c_pxcert::StatusBlock) // with which a screen reader opens the window
        setAccessibleDescription(box->toPlainText().simplified());
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
    ui->plainTextEdit_detail_2->clearTexts();
    const bool sufficed = memory_edge::suffices([&] {
        for (const detail_node &node : m_nodes) {
            if (isSelected(node, index))
                appendRow(ui->tableWidget_detailinfo, node);
        }
    });
    if (!sufficed)
        ui->tableWidget_detailinfo->setRowCount(0);
}

void MainWindow::on_tableWidget_detailinfo_clicked(const QModelIndex &index)
{
    ui->plainTextEdit_detail_2->clearTexts();
    const QString name = ui->tableWidget_detailinfo->item(index.row(), kNameColumn)->text();
    const bool sufficed = memory_edge::suffices([&] {
        std::vector<QString> texts;
        for (const detail_node &node : m_nodes) {
            if (node.name == name)
                texts.push_back(node.full_value);
        }
        ui->plainTextEdit_detail_2->appendTexts(texts);
    });
    if (!sufficed)
        ui->plainTextEdit_detail_2->clearTexts();
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
