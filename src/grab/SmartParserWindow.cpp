#include "grab/SmartParserWindow.h"

#include "common/ErrorTrap.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <utility>

namespace corvalent {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

} // namespace

SmartParserWindow::SmartParserWindow(const QString& grabbed, QWidget* mainWindow)
    : QWidget(mainWindow, Qt::Tool | Qt::WindowStaysOnTopHint)
{
    setObjectName(QStringLiteral("frmSmartParser"));
    setWindowTitle(QStringLiteral("Smart Data Collector"));
    // The user's hands are on the main window's Grab buttons; this window must not take the keyboard from it.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);

    m_current = new QLineEdit(this);
    m_current->setObjectName(QStringLiteral("txtCurrent"));
    m_current->setToolTip(tr("The line that the next Grab takes; select part of it to take only that part"));
    m_down = new QPushButton(tr("&Previous line"), this);
    m_down->setObjectName(QStringLiteral("cmdDown"));
    m_down->setToolTip(tr("Go back to the previous line"));
    m_up = new QPushButton(tr("&Next line"), this);
    m_up->setObjectName(QStringLiteral("cmdUp"));
    m_up->setToolTip(tr("Go on to the next line"));
    m_grabbed = new QPlainTextEdit(this);
    m_grabbed->setObjectName(QStringLiteral("txtGrabbed"));
    m_grabbed->setToolTip(tr("The lines still to come"));
    // One grabbed line per line of the box, so the user can see where each one ends.
    m_grabbed->setLineWrapMode(QPlainTextEdit::NoWrap);

    // Small enough to sit beside the main window: a current line of about 30 characters, six lines to come.
    const QFontMetrics lineMetrics(m_current->font());
    const int x = lineMetrics.horizontalAdvance(QLatin1Char('x'));
    m_current->setMinimumWidth(m_current->sizeHint().width() + 13 * x); // its own hint is 17 characters
    const QFontMetrics boxMetrics(m_grabbed->font());
    m_grabbed->setMinimumHeight(6 * boxMetrics.lineSpacing() + 2 * m_grabbed->frameWidth()
                                + 2 * int(m_grabbed->document()->documentMargin()));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_down);
    buttons->addWidget(m_up);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_current);
    layout->addLayout(buttons);
    layout->addWidget(m_grabbed, 1);
    setTabOrder(m_current, m_down);
    setTabOrder(m_down, m_up);
    setTabOrder(m_up, m_grabbed);

    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);
    // The keyboard stays with the main window while the collector is open: these reach it from there too.
    for (auto [button, key] : {std::pair{m_up, QKeySequence(Qt::CTRL | Qt::Key_Down)},
                               std::pair{m_down, QKeySequence(Qt::CTRL | Qt::Key_Up)}}) {
        auto* shortcut = new QShortcut(key, this);
        shortcut->setContext(Qt::ApplicationShortcut);
        connect(shortcut, &QShortcut::activated, button, [button = button] {
            if (button->isEnabled())
                button->click();
        });
        button->setToolTip(button->toolTip() + QStringLiteral(" (%1)").arg(key.toString(QKeySequence::NativeText)));
    }

    connect(m_up, &QPushButton::clicked, &m_collector, &SmartDataCollector::cmdUp_Click);
    connect(m_down, &QPushButton::clicked, &m_collector, &SmartDataCollector::cmdDown_Click);
    connect(m_current, &QLineEdit::textEdited, &m_collector, &SmartDataCollector::setCurrent);
    connect(m_grabbed, &QPlainTextEdit::textChanged, this, [this] {
        // The box keeps LF between its lines; the collector keeps what it was given, CR LF.
        m_shownGrabbed = m_grabbed->toPlainText().replace(QLatin1Char('\n'), kCrLf);
        m_collector.setGrabbed(m_shownGrabbed);
    });
    connect(&m_collector, &SmartDataCollector::changed, this, &SmartParserWindow::showState);

    trappedSub(QStringLiteral("frmSmartParser: Sub Form_Load"), [&] {
        m_collector.Load(grabbed);
        showState();
        if (m_collector.isFinished()) {
            // Nothing to hand out. Close once the caller is back in the event loop, so that it has had the
            // chance to connect to unloaded().
            QMetaObject::invokeMethod(this, [this] { close(); }, Qt::QueuedConnection);
            return;
        }
        connect(&m_collector, &SmartDataCollector::finished, this, &QWidget::close);

        resize(minimumSizeHint());
        placeBeside(mainWindow);
        show();
        // Once shown, the window manager may have told us our real frame; place it again with that.
        placeBeside(mainWindow);
    });
}

SmartParserWindow::~SmartParserWindow()
{
    // Taken down without a close (with the main window, say): the main window must still hear of it.
    if (!m_unloaded) {
        m_unloaded = true;
        emit unloaded();
    }
}

QString SmartParserWindow::currentText() const
{
    return m_current->text();
}

QString SmartParserWindow::selectedText() const
{
    return m_current->selectedText();
}

void SmartParserWindow::RemoveText(bool bUserSelectedText)
{
    // Without a selection the box still has a caret, which is where a selection of nothing would start.
    const int start = m_current->hasSelectedText() ? m_current->selectionStart() : m_current->cursorPosition();
    m_collector.RemoveText(bUserSelectedText, start, m_current->selectionLength());
}

void SmartParserWindow::closeEvent(QCloseEvent* event)
{
    trappedSub(QStringLiteral("frmSmartParser: Sub Form_Unload"), [&] {
        if (!m_unloaded) {
            m_unloaded = true;
            emit unloaded();
        }
    });
    event->accept();
}

void SmartParserWindow::placeBeside(QWidget* mainWindow)
{
    if (!mainWindow)
        return;
    const QRect main = mainWindow->frameGeometry();
    QSize frame = frameGeometry().size();
    if (!isVisible()) {
        // No frame of our own yet: assume the window manager will give us borders like the main window's.
        frame = size() + (main.size() - mainWindow->size());
    }
    int left = main.left() - frame.width();
    int top = main.top() + (main.height() - frame.height()) / 2;
    // Beside the main window, on its screen: when there is no room on the left it overlaps the main window
    // rather than disappear off the edge.
    if (QScreen* screen = mainWindow->screen()) {
        const QRect available = screen->availableGeometry();
        left = qMax(left, available.left());
        top = qMax(qMin(top, available.bottom() + 1 - frame.height()), available.top());
    }
    move(left, top);
}

void SmartParserWindow::showState()
{
    // A new step starts at the beginning of its line, with nothing selected.
    m_current->setText(m_collector.current());
    m_current->setCursorPosition(0);
    if (m_collector.grabbed() != m_shownGrabbed) {
        const QSignalBlocker quiet(m_grabbed);
        m_shownGrabbed = m_collector.grabbed();
        m_grabbed->setPlainText(m_shownGrabbed);
    }
    m_up->setEnabled(m_collector.canGoNext());
    m_down->setEnabled(m_collector.canGoBack());
}

} // namespace corvalent
