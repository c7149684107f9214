#include "integration/IntegrateWindow.h"

#include "act/HostTexts.h"
#include "common/ControlName.h"
#include "common/ErrorTrap.h"
#include "common/ProgramTitle.h"
#include "common/Prompter.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

namespace corvalent {

namespace {

const std::array<const char*, IntegrateWindow::kViews> kViewNames{"Contacts", "Contact List", "Groups",
                                                                   "Task List", "Calendars", "E-mail"};

QString title()
{
    return QString::fromLatin1(kProgramTitle);
}

// An icon as installed beside the program (share/icons/hicolor), or where an installation would put it.
QString installedIcon(int size)
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath()
                           + QStringLiteral("/../share/icons/hicolor/%1x%1/apps/corvalent.png").arg(size));
}

} // namespace

IntegrateWindow::IntegrateWindow(ActSession& session, AutomationBackend& backend, QWidget* parent)
    : QDialog(parent), m_session(session), m_backend(backend)
{
    setObjectName(QStringLiteral("frmIntegrate"));
    setWindowTitle(HostTexts(backend.hostName()).integrateCaption());
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);

    auto toolbar = new QGroupBox(QStringLiteral("Toolbar Button added to the following Views :"), this);
    auto menu = new QGroupBox(QStringLiteral("Menu Item added to the following Views :"), this);
    auto toolbarGrid = new QGridLayout(toolbar);
    auto menuGrid = new QGridLayout(menu);
    // Each view's name stands beside its toolbar box; a click on it toggles that box.
    for (int view = 0; view < kViews; ++view) {
        const QString name = QLatin1String(kViewNames[size_t(view)]);
        auto label = new QLabel(name, toolbar);
        label->setObjectName(ControlName("lblScreen", view));
        label->installEventFilter(this);
        m_labels[size_t(view)] = label;
        for (int kind = 0; kind < 2; ++kind) {
            const int index = view + kind * kViews;
            auto box = new QCheckBox(kind == 0 ? QString() : name, kind == 0 ? toolbar : menu);
            box->setObjectName(ControlName("chkScreen", index));
            box->setAccessibleName(kind == 0 ? tr("Toolbar button in %1").arg(name) : tr("Tools menu entry in %1").arg(name));
            // As wide as what it shows, so that a click beside it does not toggle it.
            box->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
            connect(box, &QCheckBox::clicked, this, [this, index] { chkScreen_Click(index); });
            m_boxes[size_t(index)] = box;
        }
        toolbarGrid->addWidget(m_boxes[size_t(view)], view, 0);
        toolbarGrid->addWidget(label, view, 1);
        menuGrid->addWidget(m_boxes[size_t(view + kViews)], view, 0);
    }
    toolbarGrid->setColumnStretch(2, 1);
    menuGrid->setColumnStretch(1, 1);

    auto close = new QPushButton(QStringLiteral("&Close"), this);
    close->setObjectName(QStringLiteral("cmdOK"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &IntegrateWindow::cmdOK_Click);
    auto cancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &IntegrateWindow::cmdCancel_Click);

    auto frames = new QHBoxLayout;
    frames->addWidget(toolbar);
    frames->addWidget(menu);
    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(close);
    buttons->addWidget(cancel);
    auto column = new QVBoxLayout(this);
    column->addLayout(frames);
    column->addLayout(buttons);
    // Space checks the first view's toolbar box, Enter closes.
    m_boxes[0]->setFocus();
}

ActSession::AuxCommand IntegrateWindow::ProgramCommand()
{
    ActSession::AuxCommand command;
    command.name = title();
    command.program = QCoreApplication::applicationFilePath();
    command.folder = QCoreApplication::applicationDirPath();
    command.title = title();
    command.hint = QStringLiteral("click to launch ") + title();
    command.smallIcon = installedIcon(16);
    command.largeIcon = installedIcon(32);
    command.flags = 1;
    return command;
}

void IntegrateWindow::Form_Load()
{
    trappedSub(QStringLiteral("frmIntegrate: Sub Form_Load"), [&] {
        m_session.createAuxCommands(m_backend);
        loadBoxes();
        m_changed = false;
    });
}

void IntegrateWindow::loadBoxes()
{
    for (qint16 view = 1; view <= kViews; ++view) {
        m_boxes[size_t(view - 1)]->setChecked(m_session.auxCommandInToolbar(title(), view));
        m_boxes[size_t(view + 5)]->setChecked(m_session.auxCommandInToolsMenu(title(), view));
    }
}

void IntegrateWindow::chkScreen_Click(int Index)
{
    trappedSub(QStringLiteral("frmIntegrate: Sub chkScreen_Click"), [&] {
        m_changed = true;
        if (!m_session.auxCommandExists(title())) {
            m_addResult = m_session.addAuxCommand(ProgramCommand());
            if (m_addResult != 0) {
                // A button for a command the contact manager refused cannot be placed either; asking would only
                // add an error box to the message.
                Prompter::instance().message(kFailureMessage, Prompter::OkOnly);
                return;
            }
        }
        const bool checked = m_boxes[size_t(Index)]->isChecked();
        if (Index >= kViews)
            m_session.placeAuxCommandInToolsMenu(title(), qint16(Index - 5), checked);
        else
            m_session.placeAuxCommandInToolbar(title(), qint16(Index + 1), checked);
    });
}

void IntegrateWindow::lblScreen_Click(int Index)
{
    QCheckBox* box = m_boxes[size_t(Index)];
    box->setChecked(!box->isChecked());
    chkScreen_Click(Index);
}

bool IntegrateWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonRelease
        && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        for (int view = 0; view < kViews; ++view) {
            if (watched == m_labels[size_t(view)]) {
                lblScreen_Click(view);
                return true;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

void IntegrateWindow::cmdOK_Click()
{
    bool restart = false;
    trappedSub(QStringLiteral("frmIntegrate: Sub cmdOK_Click"), [&] {
        if (!m_changed)
            return;
        if (m_addResult != 0) {
            Prompter::instance().message(kFailureMessage, Prompter::OkOnly);
            return;
        }
        const QString question = HostTexts(m_backend.hostName()).restartQuestion();
        restart = Prompter::instance().message(question, Prompter::YesNo, kRestartCaption) == Prompter::Yes;
        loadBoxes();
    });
    accept();
    if (restart)
        emit restartRequested();
}

void IntegrateWindow::cmdCancel_Click()
{
    reject();
}

} // namespace corvalent
