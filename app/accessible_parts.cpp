#include "app/accessible_parts.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QStackedWidget>
#include <QTabBar>
#include <QVector>
#include <utility>

namespace accessible_parts {

namespace {

// One tab of a bar.
class Tab : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    Tab(QTabBar *bar, int index)
        : m_bar(bar)
        , m_index(index)
    {
    }

    bool isValid() const override { return m_bar && m_index < m_bar->count(); }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return parent() ? parent()->window() : nullptr; }
    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_bar);
    }
    QAccessibleInterface *child(int /*index*/) const override { return nullptr; }
    QAccessibleInterface *childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface * /*child*/) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::PageTab; }
    void setText(QAccessible::Text /*kind*/, const QString & /*text*/) override {}

    QString text(QAccessible::Text kind) const override
    {
        return isValid() && kind == QAccessible::Name ? m_bar->tabText(m_index) : QString();
    }

    QRect rect() const override
    {
        if (!isValid())
            return {};
        const QRect tab = m_bar->tabRect(m_index);
        return {m_bar->mapToGlobal(tab.topLeft()), tab.size()};
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.invalid = !isValid();
        if (state.invalid)
            return state;
        state.selectable = true;
        state.focusable = true;
        state.selected = m_bar->currentIndex() == m_index;
        state.focused = state.selected && m_bar->hasFocus();
        state.invisible = !m_bar->isVisible();
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface
                   ? static_cast<QAccessibleActionInterface *>(this)
                   : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString & /*action*/) const override { return {}; }
    void doAction(const QString &action) override
    {
        if (isValid() && action == pressAction())
            m_bar->setCurrentIndex(m_index);
    }

private:
    QPointer<QTabBar> m_bar;
    int m_index;
};

// A tab bar that has a name of its own, and nothing but tabs in it.
class TabList : public QAccessibleWidget
{
public:
    explicit TabList(QTabBar *bar)
        : QAccessibleWidget(bar, QAccessible::PageTabList)
        , m_bar(bar)
    {
    }
    ~TabList() override
    {
        for (const QAccessible::Id tab : std::as_const(m_tabs))
            QAccessible::deleteAccessibleInterface(tab);
    }

    int childCount() const override { return m_bar->count(); }
    QAccessibleInterface *child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        while (m_tabs.size() <= index)
            m_tabs += QAccessible::registerAccessibleInterface(new Tab(m_bar, int(m_tabs.size())));
        return QAccessible::accessibleInterface(m_tabs.at(index));
    }
    int indexOfChild(const QAccessibleInterface *tab) const override
    {
        for (int i = 0; i < m_tabs.size(); ++i) {
            if (QAccessible::accessibleInterface(m_tabs.at(i)) == tab)
                return i;
        }
        return -1;
    }
    QAccessibleInterface *focusChild() const override
    {
        return m_bar->hasFocus() ? child(m_bar->currentIndex()) : nullptr;
    }

private:
    QTabBar *m_bar; ///< lives as long as the interface
    mutable QVector<QAccessible::Id> m_tabs;
};

// A selector that is called by its name, with its value as a text.
class Selector : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit Selector(QComboBox *selector)
        : QAccessibleWidget(selector, QAccessible::ComboBox)
        , m_selector(selector)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? value() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = m_selector->view()->isVisible();
        state.collapsed = !state.expanded;
        state.hasPopup = true;
        state.readOnly = true;
        return state;
    }
    int childCount() const override { return m_selector->view()->isVisible() ? 1 : 0; }
    QAccessibleInterface *child(int index) const override
    {
        return index == 0 && childCount() > 0
                   ? QAccessible::queryAccessibleInterface(m_selector->view())
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *list) const override
    {
        return list && list->object() == m_selector->view() ? 0 : -1;
    }
    QStringList actionNames() const override { return {showMenuAction()}; }
    void doAction(const QString &action) override
    {
        if (action == showMenuAction())
            m_selector->showPopup();
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface *>(this)
                                                  : QAccessibleWidget::interface_cast(type);
    }
    QString text(int start, int end) const override { return value().mid(start, end - start); }
    int characterCount() const override { return int(value().size()); }
    // Screen readers speak a text that comes unasked where it is selected.
    int selectionCount() const override { return 1; }
    void selection(int /*index*/, int *start, int *end) const override
    {
        *start = 0;
        *end = characterCount();
    }
    void addSelection(int /*start*/, int /*end*/) override {}
    void removeSelection(int /*index*/) override {}
    void setSelection(int /*index*/, int /*start*/, int /*end*/) override {}
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int /*position*/) override {}
    QRect characterRect(int /*offset*/) const override { return {}; }
    int offsetAtPoint(const QPoint & /*point*/) const override { return -1; }
    void scrollToSubstring(int /*start*/, int /*end*/) override {}
    QString attributes(int /*offset*/, int *start, int *end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    QString value() const { return m_selector->currentText(); }

    QComboBox *m_selector; ///< lives as long as the interface
};

// The toolkit tells that the bar has got the focus, and of a tab only when another is chosen.
void tellFocusedTab(QTabBar *bar)
{
    const auto tell = [bar] {
        QAccessibleEvent event(bar, QAccessible::Focus);
        event.setChild(bar->currentIndex());
        QAccessible::updateAccessibility(&event);
    };
    QObject::connect(qApp, &QApplication::focusChanged, bar,
                     [bar, tell](QWidget * /*old*/, QWidget *now) {
                         if (now == bar) // which is told first
                             QMetaObject::invokeMethod(bar, tell, Qt::QueuedConnection);
                     });
}

void tellNewValue(QComboBox *selector)
{
    // As inserted alone: that the one before is gone would be spoken, too.
    QObject::connect(selector, &QComboBox::currentTextChanged, selector,
                     [selector](const QString &now) {
                         QAccessibleTextInsertEvent event(selector, 0, now);
                         QAccessible::updateAccessibility(&event);
                     });
}

bool isDecoration(const QWidget *widget)
{
    const auto *label = qobject_cast<const QLabel *>(widget);
    if (label) // the form's may be asked about before it has its picture
        return !label->pixmap(Qt::ReturnByValue).isNull() ||
               label->objectName() == QLatin1String("label_icon");
    const auto *frame = qobject_cast<const QFrame *>(widget);
    return frame && frame->frameShape() == QFrame::HLine;
}

// For the class that has parts of its own; the classes of an object are asked for in turn,
// beginning with its own.
QAccessibleInterface *made(const QString &className, QObject *object)
{
    auto *widget = qobject_cast<QWidget *>(object);
    if (!widget)
        return nullptr;
    if (className == QLatin1String("QTabBar")) {
        tellFocusedTab(static_cast<QTabBar *>(widget));
        return new TabList(static_cast<QTabBar *>(widget));
    }
    if (className == QLatin1String("QComboBox")) {
        tellNewValue(static_cast<QComboBox *>(widget));
        return new Selector(static_cast<QComboBox *>(widget));
    }
    if ((className == QLatin1String("QLabel") || className == QLatin1String("QFrame")) &&
        isDecoration(widget))
        return new QAccessibleWidget(widget, QAccessible::Whitespace);
    if (className == QLatin1String("QStackedWidget")) // what the pages lie on
        return new QAccessibleWidget(widget, QAccessible::Whitespace);
    if (className == QLatin1String("QWidget") &&
        qobject_cast<QStackedWidget *>(widget->parentWidget()))
        return new QAccessibleWidget(widget, QAccessible::Grouping);
    return nullptr;
}

} // namespace

void install()
{
    QAccessible::installFactory(&made);
}

} // namespace accessible_parts
