#include "app/ServicesPanel.h"

#include "common/ControlName.h"
#include "common/ErrorTrap.h"
#include "common/ProgramFolder.h"
#include "common/VbRuntime.h"
#include "prefs/Preferences.h"
#include "prefs/SettingsFile.h"
#include "services/IniLib.h"
#include "services/ServiceCatalogue.h"
#include "services/ServiceDefinition.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QToolButton>

namespace corvalent {

namespace {

// A service name may hold "&", which a button would take for a mnemonic.
QString shownOnButton(const QString& caption)
{
    return QString(caption).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QString buttonFileName(int index)
{
    return GetKeyValue(ServicesPanel::kButtonsSection, QString::number(index + 1), QString(), QString(), QString(),
                       SettingsFilePath());
}

} // namespace

ServicesPanel::ServicesPanel(bool& filling, QWidget* listParent, QWidget* parent)
    : QWidget(parent), m_filling(filling)
{
    setObjectName(QStringLiteral("fraServices"));
    auto grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    for (int i = 0; i < kButtons; ++i) {
        auto button = new QPushButton(this);
        button->setObjectName(ControlName("chkServices", i));
        button->setCheckable(true);
        button->setMinimumWidth(button->fontMetrics().averageCharWidth() * kCaptionLength);
        button->installEventFilter(this);
        // Not a mnemonic: the caption is a service's name, and setting it would replace the shortcut.
        auto key = new QShortcut(shortcut(i), this);
        key->setContext(Qt::WindowShortcut);
        connect(key, &QShortcut::activated, button, &QPushButton::click);
        connect(button, &QPushButton::clicked, this, [this, i] { chkServices_Click(i); });

        auto arrow = new QToolButton(this);
        arrow->setObjectName(ControlName("chkdropdown", i));
        arrow->setArrowType(Qt::DownArrow);
        // Checked while its list is open. A click would toggle it on release, after the press opened the list.
        arrow->setCheckable(true);
        connect(arrow, &QToolButton::clicked, this,
                [this, i] { m_arrows.at(size_t(i))->setChecked(m_lists.at(size_t(i))->isVisible()); });
        arrow->setToolTip(tr("Choose the service for this button"));
        arrow->setAccessibleName(tr("Choose service %1").arg(i + 1));
        connect(arrow, &QToolButton::pressed, this, [this, i] { chkdropdown_MouseDown(i); });

        auto list = new QListWidget(listParent);
        list->setObjectName(ControlName("lstServices", i));
        list->hide();
        list->installEventFilter(this);
        connect(list, &QListWidget::itemClicked, this, [this, i] { lstServices_Click(i); });

        auto pair = new QHBoxLayout;
        pair->setSpacing(0);
        pair->addWidget(button, 1);
        pair->addWidget(arrow);
        grid->addLayout(pair, i / 2, i % 2);

        m_buttons[size_t(i)] = button;
        m_arrows[size_t(i)] = arrow;
        m_lists[size_t(i)] = list;
        showCaption(i, QStringLiteral("Presets"));
    }
}

QString ServicesPanel::caption(int index) const
{
    return button(index)->property("caption").toString();
}

int ServicesPanel::pressedButton() const
{
    for (int i = 0; i < kButtons; ++i)
        if (button(i)->isChecked())
            return i;
    return -1;
}

QString ServicesPanel::ButtonServiceFile(int index)
{
    return ProgramFolder::join(PresetsDir(), buttonFileName(index) + QStringLiteral(".isf"));
}

QString ServicesPanel::ButtonServiceName(int index)
{
    return DisplayName(ServiceSetting(ButtonServiceFile(index), QStringLiteral("Name")));
}

QKeySequence ServicesPanel::shortcut(int index)
{
    return QKeySequence(Qt::ALT | Qt::Key(Qt::Key_1 + index));
}

void ServicesPanel::showCaption(int index, const QString& name)
{
    const QString text = name.left(kCaptionLength);
    QPushButton* shown = button(index);
    shown->setProperty("caption", text);
    shown->setText(shownOnButton(text));
    QString tip = tr("Use this service for GO (%1); the arrow beside it puts another service on the button")
                      .arg(shortcut(index).toString(QKeySequence::NativeText));
    if (text != name)
        tip = name + QLatin1Char('\n') + tip;
    shown->setToolTip(tip);
}

void ServicesPanel::setServiceFile(int index)
{
    m_serviceFile = ButtonServiceFile(index);
}

void ServicesPanel::setChecked(QPushButton* button, bool checked)
{
    QScopedValueRollback<bool> filling(m_filling, true);
    button->setChecked(checked);
}

void ServicesPanel::Press_Button()
{
    trappedSub(QStringLiteral("frmMain: Sub Press_Button"), [&] {
        const int pressed = int(Val(GetSetting(QStringLiteral("Pressed"), QStringLiteral("0"))));
        if (pressed < 0 || pressed >= kButtons)
            return;
        if (caption(pressed).isEmpty())
            return;
        setChecked(button(pressed), true);
        if (m_go)
            m_go->setFocus();
        setServiceFile(pressed);
    });
}

void ServicesPanel::refreshCaptions()
{
    for (int i = 0; i < kButtons; ++i)
        showCaption(i, ButtonServiceName(i));
}

void ServicesPanel::followRename(const QString& oldStem, const QString& newStem)
{
    for (int i = 0; i < kButtons; ++i) {
        if (buttonFileName(i) == oldStem)
            WriteKeyValue(kButtonsSection, QString::number(i + 1), newStem, SettingsFilePath());
    }
    const int pressed = pressedButton();
    if (pressed >= 0)
        setServiceFile(pressed);
}

void ServicesPanel::chkServices_Click(int Index)
{
    trappedSub(QStringLiteral("frmMain: Sub chkServices_Click"), [&] {
        QPushButton* pressed = button(Index);
        if (caption(Index).isEmpty()) {
            setChecked(pressed, false);
            return;
        }
        if (m_filling)
            return;
        // A press on the button that is already down selects its service again; the button stays down.
        if (!pressed->isChecked())
            setChecked(pressed, true);
        SaveSetting(QStringLiteral("Pressed"), QString::number(Index));
        if (m_go) {
            m_go->setEnabled(true);
            if (m_go->isVisible())
                m_go->setFocus();
        }
        for (int i = 0; i < kButtons; ++i) {
            if (i != Index) {
                setChecked(button(i), false);
                m_arrows.at(size_t(i))->setChecked(false);
            }
        }
        setServiceFile(Index);
        emit serviceSelected(Index);
    });
}

void ServicesPanel::placeList(int index)
{
    QListWidget* list = m_lists.at(size_t(index));
    QWidget* host = list->parentWidget();
    const QPoint topLeft = button(index)->mapTo(host, QPoint(0, button(index)->height()));
    const int width = button(index)->width() + m_arrows.at(size_t(index))->width();
    const int rows = qBound(3, list->count(), 10);
    const int height = rows * list->fontMetrics().height() + 2 * list->frameWidth() + 6;
    list->setGeometry(topLeft.x(), topLeft.y(), width, height);
    list->raise();
}

void ServicesPanel::chkdropdown_MouseDown(int Index)
{
    QListWidget* list = m_lists.at(size_t(Index));
    m_arrows.at(size_t(Index))->setChecked(true);
    lstServices_GotFocus(Index);
    placeList(Index);
    list->show();
    list->setFocus(Qt::PopupFocusReason);
    // A click anywhere else closes the list, also on a control that takes no focus.
    qApp->installEventFilter(this);
}

void ServicesPanel::lstServices_GotFocus(int Index)
{
    trappedSub(QStringLiteral("frmMain: Sub lstServices_GotFocus"), [&] {
        QListWidget* list = m_lists.at(size_t(Index));
        QScopedValueRollback<bool> filling(m_filling, true);
        list->clear();
        const QString current = DisplayName(ServiceSetting(m_serviceFile, QStringLiteral("Name")));
        list->addItems(ServiceListEntries(PresetsDir(), false));
        const QList<QListWidgetItem*> found = list->findItems(current, Qt::MatchExactly);
        // Nothing is chosen when the current service is not listed, so that Enter cannot put another one on the
        // button by accident.
        list->setCurrentRow(-1);
        if (!current.isEmpty() && !found.isEmpty())
            list->setCurrentItem(found.first());
    });
}

void ServicesPanel::lstServices_LostFocus(int Index)
{
    m_lists.at(size_t(Index))->hide();
    m_arrows.at(size_t(Index))->setChecked(false);
    qApp->removeEventFilter(this);
}

void ServicesPanel::lstServices_Click(int Index)
{
    if (m_filling)
        return;
    trappedSub(QStringLiteral("frmMain: Sub lstServices_Click"), [&] {
        QListWidget* list = m_lists.at(size_t(Index));
        const QListWidgetItem* item = list->currentItem();
        if (!item)
            return;
        const QString name = item->text();
        WriteKeyValue(kButtonsSection, QString::number(Index + 1), StoredName(name), SettingsFilePath());
        showCaption(Index, name);
        list->hide();
        setChecked(button(Index), true);
        chkServices_Click(Index);
    });
}

bool ServicesPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress && watched->isWidgetType()) {
        auto pressed = static_cast<QWidget*>(watched);
        for (int i = 0; i < kButtons; ++i) {
            QListWidget* list = m_lists.at(size_t(i));
            QToolButton* arrow = m_arrows.at(size_t(i));
            if (list->isVisible() && pressed != list && !list->isAncestorOf(pressed) && pressed != arrow)
                lstServices_LostFocus(i);
        }
    }
    for (int i = 0; i < kButtons; ++i) {
        if (watched == m_lists.at(size_t(i))) {
            if (event->type() == QEvent::FocusOut) {
                lstServices_LostFocus(i);
            } else if (event->type() == QEvent::KeyPress) {
                const int key = static_cast<QKeyEvent*>(event)->key();
                if (key == Qt::Key_Return || key == Qt::Key_Enter) {
                    lstServices_Click(i);
                    return true;
                }
                if (key == Qt::Key_Escape) {
                    lstServices_LostFocus(i);
                    m_arrows.at(size_t(i))->setFocus();
                    return true;
                }
            }
        } else if (watched == m_buttons.at(size_t(i))) {
            // The right button arrives as a context-menu event (so does the menu key); any other button but the
            // left one opens the menu on its press.
            if (event->type() == QEvent::MouseButtonPress
                && static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton
                && static_cast<QMouseEvent*>(event)->button() != Qt::RightButton) {
                emit popupRequested(static_cast<QMouseEvent*>(event)->globalPosition().toPoint());
                return true;
            }
            if (event->type() == QEvent::ContextMenu) {
                emit popupRequested(static_cast<QContextMenuEvent*>(event)->globalPos());
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace corvalent
