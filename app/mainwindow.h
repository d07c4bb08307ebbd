#pragma once

#include "cert/c_pxcert.h"
#include "cert/detail_node.h"

#include <memory>
#include <QMainWindow>
#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QString>
#include <vector>

class QFrame;
class QLabel;
class QModelIndex;
class QMouseEvent;
class QPaintEvent;
class Ui_MainWindow;

/// A buffer of one octet and its owner. Part of the published interface; deliberately used by
/// nobody.
struct stu_cert
{
    virtual ~stu_cert() = default;

    std::unique_ptr<char> buffer;
};

/// The program's only window: a frameless one of fixed size, drawn from images, with a page that
/// sums a certificate up and a page of all its fields. It shows one certificate.
///
/// GUI thread only.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Needs an application object. Creates the core manager, and with it changes the working
    /// directory; all texts come from the language table.
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    /// Shows the certificate in the file `path` (in the encoding of the file system), or `path`
    /// itself, as Latin-1 text of a certificate, when it is longer than 255 octets. A relative path
    /// means a file below the working directory, else one below the directory the program was
    /// started from. Returns what
    /// the model says of it: false when nothing could be read.
    bool loadcertfile(const char *path);

public slots:
    // Their order and the parameters' names are published.

    /// Puts the rows before those kept already, and shows them after those shown.
    void result_detail(std::vector<detail_node> detail_data);
    /// Appends `snormal` to the status box when `type` is 0, else to the identity box.
    void result_normal(const QString &snormal, int type);
    /// Closes the window.
    void Exit();
    /// Shows the full value of every row that is named as the clicked one.
    void on_tableWidget_detailinfo_clicked(const QModelIndex &index);
    /// Shows all rows (0), or those of kind `index` - 1.
    void on_comboBox_selection_currentIndexChanged(int index);
    void on_tabWidget_tabBarClicked(int index);
    void on_tabWidget_currentChanged(int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void showNothing();
    void setUpFrame();
    void setUpLabels();
    void setUpTitleStrip();
    void setUpTabs();
    void setUpTable();
    void setUpLines();
    void setUpButtons();
    void setUpBoxes();
    void setUpSelector();
    void setUpKeyboard();
    void nameControls();

    Ui_MainWindow *ui;
    c_pxcert m_cert;
    float m_scale = 1.0F;     ///< never anything else
    QFrame *m_line = nullptr; ///< the divider of the general page; a child of the window itself
    bool m_dragging = false;
    QPoint m_dragPosition; ///< where the mouse holds the window, relative to its corner
    QPixmap m_background;
    QRect m_centerRect; ///< the middle of `m_background`
    QLabel *m_titleCaption = nullptr;
    std::vector<detail_node> m_nodes;
};
