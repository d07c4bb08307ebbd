#include "app/mainwindow.h"

#include "app/accessible_parts.h"
#include "app/look/focus_mark.h"
#include "app/look/program_look.h"
#include "app/look/window_shape.h"
#include "app/look/window_style.h"
#include "app/popup_escape.h"
#include "app/table_rows.h"
#include "app/title_translation.h"
#include "core/px_core_manager.h"
#include "ui_mainwindow.h"
#include "util/c_language.h"
#include "util/qt_compat.h"
#include "util/text_keys.h"
#include "util/texts.h"

#include <QApplication>
#include <QListView>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QtMath>
#include <QToolButton>
#include <utility>

using namespace window_style;

// The resources of a static library have to be asked for. Outside of any namespace, as the macro
// wants it.
static void initResources()
{
    Q_INIT_RESOURCE(res);
    Q_INIT_RESOURCE(arrow);
}

namespace {

// The image in the version for the resolution of the screen.
QPixmap picture(const QString &path, const QWidget *window)
{
    const int version = qBound(1, qCeil(window->devicePixelRatioF()), 3);
    return QPixmap(
        path + (version > 1 ? QStringLiteral("@%1x.png").arg(version) : QStringLiteral(".png")));
}

QFrame *newLine(QWidget *window, const QRect &place)
{
    auto *line = new QFrame(window);
    line->setObjectName(QStringLiteral("lineEnd2")); // Deliberate: both lines are named so
    line->setGeometry(place);
    QPalette palette; // Qt 6 takes no colour from the style sheet, whose alpha is missing
    palette.setColor(QPalette::WindowText, QColor(236, 236, 236));
    line->setPalette(palette);
    line->setStyleSheet(lineStyle());
    line->setFrameShadow(QFrame::Plain);
    line->setMidLineWidth(1);
    line->setFrameShape(QFrame::HLine);
    return line;
}

// What only a screen reader says. A language file of the suite's own may not have it: no name is
// better than a key's.
QString spoken(QLatin1String key)
{
    const QString text = texts::shown(key);
    return text == key ? QString() : text;
}

// A label's text without its key, as a letter of the text ("&Show:") or beside it ("显示(&S):").
QString withoutMnemonic(QString text)
{
    const auto mark = text.indexOf(QLatin1Char('&'));
    const bool isBeside = mark > 0 && mark + 2 < text.size() &&
                          text.at(mark - 1) == QLatin1Char('(') &&
                          text.at(mark + 2) == QLatin1Char(')');
    return isBeside ? text.remove(mark - 1, 4) : text.remove(QLatin1Char('&'));
}

// As Space does unasked.
void pressByEnter(QAbstractButton *button)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto *shortcut = new QShortcut(key, button, nullptr, nullptr, Qt::WidgetShortcut);
        QObject::connect(shortcut, &QShortcut::activated, button, &QAbstractButton::click);
    }
}

// The margins of a text box's viewport, which the toolkit leaves to derived classes.
struct OpenScrollArea : QAbstractScrollArea
{
    static void setBottomMargin(QAbstractScrollArea *area, int margin)
    {
        void (QAbstractScrollArea::*set)(int, int, int, int) = &OpenScrollArea::setViewportMargins;
        (area->*set)(0, 0, 0, margin);
    }
};

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui_MainWindow)
    , m_cert(nullptr)
{
    initResources();
    GetCoreManager();
    c_language *language = c_language::GetLangPtr();
    language->LANG_SetFileName(QString());
    program_look::substituteFonts(language->section());
    new TitleTranslation(this);
    accessible_parts::install();

    ui->setupUi(this);
    setUpFrame();
    setUpLabels();
    setUpTitleStrip();
    connect(&m_cert, &c_pxcert::result_detail, this, &MainWindow::result_detail);
    connect(&m_cert, &c_pxcert::result_normal, this, &MainWindow::result_normal);
    setUpTabs();
    setUpTable();
    setUpLines();
    setUpButtons();
    setUpBoxes();
    setUpSelector();
    ui->tabWidget->setCurrentIndex(0);
    setUpKeyboard();
    nameControls();
}

MainWindow::~MainWindow()
{
    delete ui;
}

void MainWindow::setUpFrame()
{
    setFixedWidth(scaled(kWidth, m_scale));
    setFixedHeight(scaled(kHeight, m_scale));
    setWindowFlags(Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground, true);
    m_background.load(QStringLiteral(":/img/res/background.png"));
    m_centerRect = backgroundCentre();
    new WindowShape(this);
}

void MainWindow::setUpLabels()
{
    ui->label_icon->setGeometry(placed(kIcon, m_scale));
    ui->label_icon->setPixmap(picture(QStringLiteral(":/img/cert"), this));
    ui->label_icon->setScaledContents(true);
    ui->label->setGeometry(placed(kIconLabel, m_scale));
    ui->label->setStyleSheet(textStyle(m_scale));
    ui->label->setText(texts::shown(text_keys::kLabelCertificate));
    ui->label_2_notice->setGeometry(placed(kNotice, m_scale));
    ui->label_2_notice->setStyleSheet(textStyle(m_scale));
    ui->label_2_notice->setText(texts::shown(text_keys::kLabelShow));
}

void MainWindow::setUpTitleStrip()
{
    auto *strip = new QLabel(this);
    strip->setGeometry(placed(kTitleStrip, m_scale));
    strip->setScaledContents(true);
    strip->setPixmap(picture(QStringLiteral(":/img/res/bk_rose_gold_noborder"), this));
}

void MainWindow::setUpTabs()
{
    ui->tabWidget->setStyleSheet(tabsStyle(m_scale));
    ui->tabWidget->setGeometry(placed(kTabs, m_scale));
    ui->tabWidget->setTabText(0, texts::shown(text_keys::kTabGeneral));
    ui->tabWidget->setTabText(1, texts::shown(text_keys::kTabDetails));
}

void MainWindow::setUpTable()
{
    QTableWidget *table = ui->tableWidget_detailinfo;
    QHeaderView *header = table->horizontalHeader();
    table->setColumnCount(kColumns);
    header->setStyleSheet(tableHeaderStyle());
    table->setGeometry(placed(kTable, m_scale));
    header->setDefaultAlignment(Qt::AlignLeft);
    header->setHighlightSections(false);
    // Much less than either column has: else the toolkit asks the header's font, which is opened
    // for that alone while its page is hidden.
    header->setMinimumSectionSize(0);
    table->setHorizontalHeaderLabels(
        {texts::shown(text_keys::kColumnField), texts::shown(text_keys::kColumnValue)});
    table->setColumnWidth(kNameColumn, table->width() / 5 * 2);
    header->setStretchLastSection(true);
    table->setShowGrid(false);
    table->setStyleSheet(tableStyle(m_scale));
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->verticalScrollBar()->setStyleSheet(tableScrollBarStyle(m_scale));
    table->verticalHeader()->setVisible(false);
    header->setDisabled(true);
    table->verticalHeader()->setDisabled(true);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setItemDelegate(new RowDelegate(table));
}

void MainWindow::setUpLines()
{
    newLine(this, placed(kTabLine, m_scale));
    m_line = newLine(this, placed(kGeneralLine, m_scale));
}

void MainWindow::setUpButtons()
{
    auto *closeButton = new QToolButton(this);
    auto *bottomButton = new QPushButton(this);
    m_titleCaption = new QLabel(this);

    QFont font(QStringLiteral("Microsoft YaHei"), kCaptionPointSize, QFont::Normal);
    m_titleCaption->setFont(font);
    QPalette palette;
    palette.setBrush(QPalette::All, QPalette::WindowText, QBrush(QColor(255, 255, 255, 255)));
    m_titleCaption->setPalette(palette);
    m_titleCaption->setObjectName(QStringLiteral("titileCaption")); // Deliberate: spelled so
    m_titleCaption->setText(texts::shown(text_keys::kWindowTitle));

    closeButton->setGeometry(placed(kCloseButton, m_scale, size()));
    bottomButton->setFixedHeight(scaled(kButtonHeight, m_scale));
    bottomButton->setGeometry(placed(kBottomButton, m_scale, size()));
    font.setPixelSize(scaled(kButtonPixelSize, m_scale));
    bottomButton->setFont(font);
    bottomButton->setText(texts::shown(text_keys::kClose));
    m_titleCaption->setGeometry(placed(kCaption, m_scale, size()));
    closeButton->setToolTip(texts::shown(text_keys::kClose));
    closeButton->setCursor(Qt::PointingHandCursor);
    connect(closeButton, &QToolButton::clicked, this, &MainWindow::Exit);
    connect(bottomButton, &QPushButton::clicked, this, &MainWindow::Exit);
    closeButton->setStyleSheet(closeButtonStyle());
    bottomButton->setStyleSheet(bottomButtonStyle(m_scale));
    bottomButton->setCursor(Qt::PointingHandCursor);

    // Reading order.
    setTabOrder(closeButton, ui->tabWidget);
    setTabOrder(ui->tabWidget, ui->plainTextEdit_normal);
    setTabOrder(ui->plainTextEdit_normal, ui->plainTextEdit_normal_2);
    setTabOrder(ui->plainTextEdit_normal_2, ui->comboBox_selection);
    setTabOrder(ui->comboBox_selection, ui->tableWidget_detailinfo);
    setTabOrder(ui->tableWidget_detailinfo, ui->plainTextEdit_detail_2);
    setTabOrder(ui->plainTextEdit_detail_2, bottomButton);
    closeButton->setAccessibleName(texts::shown(text_keys::kClose));
    pressByEnter(closeButton);
    pressByEnter(bottomButton);
}

void MainWindow::setUpBoxes()
{
    const std::pair<QPlainTextEdit *, Place> boxes[] = {
        {ui->plainTextEdit_normal, kStatusBox},
        {ui->plainTextEdit_normal_2, kIdentityBox},
        {ui->plainTextEdit_detail_2, kDetailBox},
    };
    for (const auto &[box, place] : boxes) {
        box->setGeometry(placed(place, m_scale));
        box->setStyleSheet(textStyle(m_scale));
        box->verticalScrollBar()->setStyleSheet(boxScrollBarStyle(m_scale));
        box->setContextMenuPolicy(Qt::NoContextMenu);
        box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }
    // Of the form's vertical line, only its two ends would be seen. A name of any direction stands
    // behind its label.
    for (TextBox *box : {ui->plainTextEdit_normal, ui->plainTextEdit_normal_2}) {
        box->setLineWidth(0);
        box->beginLinesLeft();
    }
    // The line between the two boxes crosses the lower end of the first.
    constexpr int kCrossed = 24;
    OpenScrollArea::setBottomMargin(ui->plainTextEdit_normal, scaled(kCrossed, m_scale));
}

void MainWindow::setUpSelector()
{
    QComboBox *selector = ui->comboBox_selection;
    selector->setView(new QListView(selector)); // the items' style applies to no other view
    selector->setGeometry(placed(kSelector, m_scale));
    for (const QLatin1String key :
         {text_keys::kShowAll, text_keys::kShowBasicFields, text_keys::kShowExtensions})
        selector->addItem(texts::shown(key));
    selector->setStyleSheet(selectorStyle(m_scale));
}

// Beyond the mouse: what a keyboard and a screen reader need, without a control of its own.
void MainWindow::setUpKeyboard()
{
    for (const char *keys : {"Esc", "Ctrl+W", "Ctrl+Q"})
        connect(new QShortcut(QKeySequence(QLatin1String(keys)), this), &QShortcut::activated, this,
                &MainWindow::Exit);
    // Of two pages, the next one is the one before. Who changes them from within one is told which
    // it is, and goes on from its tab.
    for (const char *keys : {"Ctrl+Tab", "Ctrl+Shift+Tab", "Ctrl+PgDown", "Ctrl+PgUp"})
        connect(new QShortcut(QKeySequence(QLatin1String(keys)), this), &QShortcut::activated, this,
                [this] {
                    ui->tabWidget->tabBar()->setFocus();
                    ui->tabWidget->setCurrentIndex(1 - ui->tabWidget->currentIndex());
                });
    connect(ui->tableWidget_detailinfo, &RowTable::rowChosen, this,
            &MainWindow::on_tableWidget_detailinfo_clicked);
    ui->comboBox_selection->view()->installEventFilter(new PopupEscape(this));
    ui->tabWidget->setFocus();
    new FocusMark(this);
}

void MainWindow::nameControls()
{
    ui->plainTextEdit_normal->setAccessibleName(spoken(text_keys::kSpokenStatus));
    ui->plainTextEdit_normal_2->setAccessibleName(spoken(text_keys::kSpokenIdentity));
    ui->comboBox_selection->setAccessibleName(withoutMnemonic(ui->label_2_notice->text()));
    ui->label_2_notice->setBuddy(ui->comboBox_selection);
    ui->tabWidget->tabBar()->setAccessibleName(spoken(text_keys::kSpokenPages));
    for (int i = 0; i < ui->tabWidget->count(); ++i)
        ui->tabWidget->widget(i)->setAccessibleName(ui->tabWidget->tabText(i));
    ui->tableWidget_detailinfo->setAccessibleName(spoken(text_keys::kSpokenFields));
    ui->plainTextEdit_detail_2->setAccessibleName(spoken(text_keys::kSpokenFullValue));
}

void MainWindow::Exit()
{
    close();
}

void MainWindow::paintEvent(QPaintEvent * /*event*/)
{
    Patch patches[kPatchCount];
    backgroundPatches(size(), m_centerRect, patches);
    QPainter painter(this);
    for (const Patch &patch : patches)
        painter.drawPixmap(patch.target, m_background, patch.source);
}

void MainWindow::mousePressEvent(QMouseEvent *event)
{
    const QPoint global = globalPoint(event);
    if (dragArea(size()).contains(mapFromGlobal(global))) {
        m_dragging = true;
        m_dragPosition = global - pos();
    }
    QWidget::mousePressEvent(event);
}

void MainWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragging && event->buttons()) {
        const QPoint global = globalPoint(event);
        const QPoint target = global - m_dragPosition;
        // Deliberate: the threshold counts from the desktop's origin, not from where the drag
        // began.
        if (target.manhattanLength() > QApplication::startDragDistance()) {
            move(target);
            m_dragPosition = global - pos();
        }
    }
    QWidget::mouseMoveEvent(event);
}

void MainWindow::mouseReleaseEvent(QMouseEvent *event)
{
    m_dragging = false;
    QWidget::mouseReleaseEvent(event);
}
