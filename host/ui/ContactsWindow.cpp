#include "ui/ContactsWindow.h"

#include "common/Error.h"
#include "common/Prompter.h"
#include "model/ContactHost.h"
#include "store/ContactStore.h"
#include "ui/AuxCommandItems.h"
#include "ui/ContactListModel.h"
#include "ui/ContactView.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QIcon>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QStatusBar>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QToolBar>
#include <utility>

namespace corvalent::host {

namespace {

const QString kTitle = QStringLiteral("Corvalent Contacts");
const QString kDatabaseSuffix = QStringLiteral("cvdb");
// Short enough to look immediate, long enough for a client's reads after its move to be answered first.
constexpr int kCatchUpDelayMs = 20;

QString describe(const std::exception& e)
{
    if (auto error = dynamic_cast<const Error*>(&e))
        return QStringLiteral("%1 (error %2)").arg(error->description()).arg(error->number());
    return QString::fromLocal8Bit(e.what());
}

} // namespace

struct ContactsWindow::Impl {
    ContactsWindow* q;
    ContactHost& host;

    QStackedWidget* pages = nullptr;
    ContactView* form = nullptr;
    QTableView* table = nullptr;
    ContactListModel* listModel = nullptr;
    QLabel* position = nullptr;

    QAction* first = nullptr;
    QAction* previous = nullptr;
    QAction* next = nullptr;
    QAction* last = nullptr;
    QAction* viewContacts = nullptr;
    QAction* viewList = nullptr;
    QList<QAction*> needDatabase;
    QMenu* toolsMenu = nullptr;
    // While a client writes several fields the window shows nothing new, then catches up once.
    bool frozen = false;
    bool stale = false;
    // The contact is shown a moment after a move or a change, in one go: the client that made it (typically the
    // add-on, which reads the new contact at once) is answered first, and a quick run of moves repaints once. The
    // list's model follows at once, as its rows must always be the host's.
    QTimer catchUp;
    qint64 shownContact = -1;
    // The user's own edit is shown back at once: the next field may be typed into within the delay.
    bool savingEdit = false;
    QToolBar* commandBar = nullptr;
    // Owns the actions of the auxiliary commands shown now; replaced whole when they are rebuilt.
    QObject* auxActions = nullptr;

    QString lastLookup;
    bool followingHost = false; // the table's selection is being moved to the host's row, not by the user
    bool closing = false;

    Impl(ContactsWindow* window, ContactHost& h) : q(window), host(h) {}

    void report(const QString& text) { Prompter::instance().message(text, Prompter::Critical, kTitle); }

    // Runs one user command against the host; a failure is told to the user and leaves the window as it was.
    template <typename Body>
    bool attempt(const QString& what, Body&& body)
    {
        try {
            body();
            return true;
        } catch (const std::exception& e) {
            report(QStringLiteral("%1\n\n%2").arg(what, describe(e)));
        }
        return false;
    }

    // A command of the user's that may take the contact away from the form: what was typed goes in first.
    template <typename Body>
    bool userCommand(const QString& what, Body&& body)
    {
        catchUpIfBehind();
        form->commitEdits();
        return attempt(what, std::forward<Body>(body));
    }

    QAction* addAction(QMenu* menu, const QString& name, const QString& text, const QKeySequence& shortcut = {})
    {
        auto action = menu->addAction(text);
        action->setObjectName(name);
        if (!shortcut.isEmpty())
            action->setShortcut(shortcut);
        return action;
    }

    void buildPages()
    {
        form = new ContactView;
        form->setObjectName(QStringLiteral("contactView"));
        QObject::connect(form, &ContactView::fieldEdited, q, [this](int fieldId, const QString& text) {
            if (catchUpIfBehind())
                return;
            // A refused edit goes back to what the contact holds; an accepted one comes back with OnContactChange.
            QScopedValueRollback saving(savingEdit, true);
            if (!attempt(QStringLiteral("The field could not be saved."), [&] { host.setField(fieldId, text); }))
                showContact();
        });

        listModel = new ContactListModel(host, q);
        table = new QTableView;
        table->setObjectName(QStringLiteral("contactListView"));
        table->setModel(listModel);
        table->setSelectionBehavior(QAbstractItemView::SelectRows);
        table->setSelectionMode(QAbstractItemView::SingleSelection);
        table->setEditTriggers(QAbstractItemView::NoEditTriggers);
        table->setTabKeyNavigation(false);
        table->setAlternatingRowColors(true);
        table->setWordWrap(false);
        table->verticalHeader()->hide();
        // Fixed row heights keep a very long lookup from measuring rows it never shows.
        table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 8);
        table->horizontalHeader()->setDefaultSectionSize(140);
        table->horizontalHeader()->setStretchLastSection(true);
        QObject::connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, q,
                         [this](const QModelIndex& current) {
                             if (followingHost || !current.isValid())
                                 return;
                             attempt(QStringLiteral("The contact could not be shown."),
                                     [&] { host.moveToRow(current.row()); });
                         });

        pages = new QStackedWidget;
        pages->addWidget(form);
        pages->addWidget(table);
        q->setCentralWidget(pages);

        position = new QLabel;
        position->setObjectName(QStringLiteral("lblPosition"));
        q->statusBar()->addPermanentWidget(position);
    }

    void buildMenus()
    {
        QStyle* style = q->style();

        QMenu* file = q->menuBar()->addMenu(QStringLiteral("&File"));
        file->setObjectName(QStringLiteral("menuFile"));
        QObject::connect(addAction(file, QStringLiteral("actionNewDatabase"), QStringLiteral("&New Database…")),
                         &QAction::triggered, q, [this] { askNewDatabase(); });
        QObject::connect(addAction(file, QStringLiteral("actionOpenDatabase"), QStringLiteral("&Open Database…"),
                                   QKeySequence::Open),
                         &QAction::triggered, q, [this] { askOpenDatabase(); });
        auto close = addAction(file, QStringLiteral("actionCloseDatabase"), QStringLiteral("&Close Database"),
                               QKeySequence::Close);
        QObject::connect(close, &QAction::triggered, q, [this] {
            userCommand(QStringLiteral("The database could not be closed."), [&] { host.closeDatabase(); });
        });
        file->addSeparator();
        auto newContact = addAction(file, QStringLiteral("actionNewContact"), QStringLiteral("New Con&tact"),
                                    QKeySequence(Qt::Key_Insert));
        QObject::connect(newContact, &QAction::triggered, q, [this] {
            if (userCommand(QStringLiteral("No contact could be added."), [&] { host.addNewContact(); })
                && pages->currentWidget() == form)
                form->editor(26)->setFocus();
        });
        auto myRecord = addAction(file, QStringLiteral("actionMyRecord"), QStringLiteral("&My Record"));
        QObject::connect(myRecord, &QAction::triggered, q, [this] {
            userCommand(QStringLiteral("My Record could not be shown."), [&] { host.goToMyRecord(); });
        });
        file->addSeparator();
        auto exit = addAction(file, QStringLiteral("actionExit"), QStringLiteral("E&xit"), QKeySequence::Quit);
        QObject::connect(exit, &QAction::triggered, q, &QWidget::close);

        QMenu* lookup = q->menuBar()->addMenu(QStringLiteral("&Lookup"));
        lookup->setObjectName(QStringLiteral("menuLookup"));
        auto lookupContact = addAction(lookup, QStringLiteral("actionLookupContact"), QStringLiteral("&Contact…"),
                                       QKeySequence::Find);
        QObject::connect(lookupContact, &QAction::triggered, q, [this] { askLookup(); });
        auto lookupAll = addAction(lookup, QStringLiteral("actionLookupAll"), QStringLiteral("&All Contacts"));
        QObject::connect(lookupAll, &QAction::triggered, q, [this] {
            userCommand(QStringLiteral("The contacts could not be listed."), [&] { host.lookupAll(); });
        });

        QMenu* view = q->menuBar()->addMenu(QStringLiteral("&View"));
        view->setObjectName(QStringLiteral("menuView"));
        viewContacts = addAction(view, QStringLiteral("actionViewContacts"), QStringLiteral("&Contacts"),
                                 QKeySequence(Qt::CTRL | Qt::Key_1));
        viewList = addAction(view, QStringLiteral("actionViewContactList"), QStringLiteral("Contact &List"),
                             QKeySequence(Qt::CTRL | Qt::Key_2));
        auto views = new QActionGroup(q);
        for (QAction* action : {viewContacts, viewList}) {
            action->setCheckable(true);
            views->addAction(action);
        }
        QObject::connect(viewContacts, &QAction::triggered, q, [this] { switchView(ContactHost::View::Contact); });
        QObject::connect(viewList, &QAction::triggered, q, [this] { switchView(ContactHost::View::ContactList); });

        QMenu* go = q->menuBar()->addMenu(QStringLiteral("&Go"));
        go->setObjectName(QStringLiteral("menuGo"));
        // Alt with the arrows leaves the editors' own keys alone, in the form as in the list.
        first = addAction(go, QStringLiteral("actionFirst"), QStringLiteral("&First Contact"),
                          QKeySequence(Qt::ALT | Qt::Key_Home));
        previous = addAction(go, QStringLiteral("actionPrevious"), QStringLiteral("&Previous Contact"),
                             QKeySequence(Qt::ALT | Qt::Key_Left));
        next = addAction(go, QStringLiteral("actionNext"), QStringLiteral("&Next Contact"),
                         QKeySequence(Qt::ALT | Qt::Key_Right));
        last = addAction(go, QStringLiteral("actionLast"), QStringLiteral("&Last Contact"),
                         QKeySequence(Qt::ALT | Qt::Key_End));
        first->setIcon(style->standardIcon(QStyle::SP_MediaSkipBackward));
        previous->setIcon(style->standardIcon(QStyle::SP_ArrowLeft));
        next->setIcon(style->standardIcon(QStyle::SP_ArrowRight));
        last->setIcon(style->standardIcon(QStyle::SP_MediaSkipForward));
        QObject::connect(first, &QAction::triggered, q, [this] { navigate(&ContactHost::first); });
        QObject::connect(previous, &QAction::triggered, q, [this] { navigate(&ContactHost::previous); });
        QObject::connect(next, &QAction::triggered, q, [this] { navigate(&ContactHost::next); });
        QObject::connect(last, &QAction::triggered, q, [this] { navigate(&ContactHost::last); });

        toolsMenu = q->menuBar()->addMenu(QStringLiteral("&Tools"));
        toolsMenu->setObjectName(QStringLiteral("menuTools"));

        auto navigation = q->addToolBar(QStringLiteral("Navigation"));
        navigation->setObjectName(QStringLiteral("toolBarNavigation"));
        navigation->addActions({first, previous, next, last});
        auto viewBar = q->addToolBar(QStringLiteral("Views"));
        viewBar->setObjectName(QStringLiteral("toolBarViews"));
        viewBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
        viewBar->addActions({viewContacts, viewList});
        commandBar = q->addToolBar(QStringLiteral("Commands"));
        commandBar->setObjectName(QStringLiteral("toolBarCommands"));
        // Commands without an icon still show their title.
        commandBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);

        needDatabase = {close, newContact, myRecord, lookupContact, lookupAll};
    }

    void navigate(void (ContactHost::*step)())
    {
        userCommand(QStringLiteral("The contact could not be shown."), [&] { (host.*step)(); });
    }

    void switchView(ContactHost::View view)
    {
        userCommand(QStringLiteral("The view could not be changed."), [&] { host.setActiveView(view); });
        // Keeps the checked entry right even when the host refused to change.
        showView();
    }

    // --- following the host ---

    void showContact()
    {
        shownContact = host.currentId();
        try {
            form->showContact(host.store(), host.currentId());
        } catch (const std::exception& e) {
            form->clear();
            q->statusBar()->showMessage(QStringLiteral("The contact could not be read: %1").arg(describe(e)));
        }
        const int row = host.currentRow();
        const int count = int(host.lookupIds().size());
        if (!host.isDatabaseOpen())
            position->setText(QStringLiteral("No database open"));
        else if (row < 0)
            position->setText(QStringLiteral("No contacts"));
        else
            position->setText(QStringLiteral("Contact %1 of %2").arg(row + 1).arg(count));
        first->setEnabled(row > 0);
        previous->setEnabled(row > 0);
        next->setEnabled(row >= 0 && row < count - 1);
        last->setEnabled(row >= 0 && row < count - 1);
        selectCurrentRow();
    }

    void selectCurrentRow()
    {
        QScopedValueRollback guard(followingHost, true);
        const int row = host.currentRow();
        QItemSelectionModel* selection = table->selectionModel();
        if (row < 0 || row >= listModel->rowCount()) {
            selection->clear();
            return;
        }
        const QModelIndex index = listModel->index(row, 0);
        if (selection->currentIndex().row() != row || !selection->isRowSelected(row)) {
            selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
            table->scrollTo(index);
        }
    }

    void scheduleCatchUp()
    {
        if (frozen)
            stale = true;
        else if (savingEdit)
            catchUpNow();
        else if (!catchUp.isActive())
            catchUp.start();
    }

    void catchUpNow()
    {
        catchUp.stop();
        if (frozen) {
            stale = true;
            return;
        }
        showContact();
    }

    // What the form holds while it is behind the host belongs to the contact moved away from: it is dropped, as a
    // move by another client always replaced it, rather than written into the contact now current.
    bool catchUpIfBehind()
    {
        if (!catchUp.isActive() || host.currentId() == shownContact)
            return false;
        catchUpNow();
        return true;
    }

    void showDatabase()
    {
        // Everything is read again, so what was waiting to be shown is shown by this.
        catchUp.stop();
        const bool open = host.isDatabaseOpen();
        q->setWindowTitle(open ? QStringLiteral("%1 - %2").arg(kTitle, QFileInfo(host.store().path()).fileName())
                               : kTitle);
        for (QAction* action : needDatabase)
            action->setEnabled(open);
        listModel->reload();
        showContact();
        showView();
    }

    void showView()
    {
        const bool contactView = host.activeView() == ContactHost::View::Contact;
        pages->setCurrentWidget(contactView ? static_cast<QWidget*>(form) : table);
        (contactView ? viewContacts : viewList)->setChecked(true);
        rebuildAuxCommands();
    }

    void rebuildAuxCommands()
    {
        delete auxActions;
        auxActions = new QObject(q);
        const int view = AuxCommandItems::viewNumber(host.activeView());
        QList<ContactStore::AuxCommand> menuCommands, barCommands;
        attempt(QStringLiteral("The commands of this view could not be read."), [&] {
            menuCommands = AuxCommandItems::toolsMenu(host.store(), view);
            barCommands = AuxCommandItems::toolbar(host.store(), view);
        });
        for (const auto& command : menuCommands)
            toolsMenu->addAction(auxAction(command, QStringLiteral("toolsCommand:")));
        for (const auto& command : barCommands)
            commandBar->addAction(auxAction(command, QStringLiteral("toolbarCommand:")));
        toolsMenu->menuAction()->setEnabled(!menuCommands.isEmpty());
    }

    QAction* auxAction(const ContactStore::AuxCommand& command, const QString& namePrefix)
    {
        auto action = new QAction(command.title.isEmpty() ? command.name : command.title, auxActions);
        action->setObjectName(namePrefix + command.name);
        action->setToolTip(command.hint);
        action->setStatusTip(command.hint);
        QIcon icon;
        if (!command.smallIcon.isEmpty() && QFileInfo::exists(command.smallIcon))
            icon.addFile(command.smallIcon, QSize(16, 16));
        if (!command.largeIcon.isEmpty() && QFileInfo::exists(command.largeIcon))
            icon.addFile(command.largeIcon, QSize(32, 32));
        action->setIcon(icon);
        QObject::connect(action, &QAction::triggered, q, [this, command] {
            if (!AuxCommandItems::launch(command))
                report(QStringLiteral("The command \"%1\" could not start \"%2\".").arg(command.name, command.program));
        });
        return action;
    }

    // --- dialogs ---

    void askOpenDatabase()
    {
        // Without a database, where the sample is: the one folder of databases a new user has.
        const QString start =
            host.isDatabaseOpen() ? QFileInfo(host.store().path()).absolutePath() : sampleDatabaseFolder();
        const QString path = Prompter::instance().openFileName(
            QStringLiteral("Open Database"),
            QStringLiteral("Contact databases (*.%1)|*.%1|All files (*)|*").arg(kDatabaseSuffix), start);
        if (!path.isEmpty())
            q->openDatabaseFile(path);
    }

    void askNewDatabase()
    {
        // The existing file is never replaced (see newDatabaseFile), so the dialog need not ask about it.
        const QString path = Prompter::instance().saveFileName(
            QStringLiteral("New Database"), QStringLiteral("Contact databases (*.%1)|*.%1").arg(kDatabaseSuffix),
            QString());
        if (!path.isEmpty())
            q->newDatabaseFile(path);
    }

    void askLookup()
    {
        bool ok = false;
        const QString text = QInputDialog::getText(
            q, QStringLiteral("Lookup Contact"),
            QStringLiteral("Find the contacts whose name, company, city or e-mail contains:"), QLineEdit::Normal,
            lastLookup, &ok);
        if (ok)
            q->lookupText(text);
    }
};

ContactsWindow::ContactsWindow(ContactHost& host, QWidget* parent)
    : QMainWindow(parent), d(std::make_unique<Impl>(this, host))
{
    setObjectName(QStringLiteral("frmContacts"));
    d->buildPages();
    d->buildMenus();

    d->catchUp.setSingleShot(true);
    d->catchUp.setInterval(kCatchUpDelayMs);
    connect(&d->catchUp, &QTimer::timeout, this, [this] { d->catchUpNow(); });
    connect(&host, &ContactHost::OnContactPosChange, this, [this] { d->scheduleCatchUp(); });
    connect(&host, &ContactHost::OnContactChange, this, [this](const QString& contactId) {
        if (!d->frozen)
            d->listModel->contactChanged(contactId.toLongLong());
        d->scheduleCatchUp();
    });
    connect(&host, &ContactHost::OnContactLookupChange, this, [this] {
        if (!d->frozen)
            d->listModel->reload();
        d->scheduleCatchUp();
    });
    connect(&host, &ContactHost::databaseOpened, this, [this] { d->showDatabase(); });
    connect(&host, &ContactHost::OnDatabaseClose, this, [this] { d->showDatabase(); });
    connect(&host, &ContactHost::refreshRequested, this, [this] {
        if (d->frozen)
            d->stale = true;
        else
            d->showDatabase();
    });
    connect(&host, &ContactHost::windowUpdateLocked, this, [this](bool locked) {
        d->frozen = locked;
        setUpdatesEnabled(!locked);
        if (!locked && std::exchange(d->stale, false))
            d->showDatabase();
    });
    connect(&host, &ContactHost::activeViewChanged, this, [this] { d->showView(); });
    connect(&host, &ContactHost::closeRequested, this, &QWidget::close);

    d->showDatabase();
    resize(860, 600);
}

ContactsWindow::~ContactsWindow()
{
    // The widgets outlive d: hiding and deleting them moves focus, which would finish an edit (and move the
    // table's selection) into handlers whose state is gone. Only closing the window writes a pending edit.
    QObject::disconnect(d->form, nullptr, this, nullptr);
    QObject::disconnect(d->table->selectionModel(), nullptr, this, nullptr);
}

bool ContactsWindow::openDatabaseFile(const QString& path)
{
    return d->userCommand(QStringLiteral("The database \"%1\" could not be opened; the open database stays open.")
                          .arg(QDir::toNativeSeparators(path)),
                      [&] { d->host.openDatabase(path); });
}

bool ContactsWindow::newDatabaseFile(const QString& path)
{
    QString target = path;
    if (QFileInfo(target).suffix().isEmpty())
        target += QLatin1Char('.') + kDatabaseSuffix;
    if (QFileInfo::exists(target)) {
        d->report(QStringLiteral("\"%1\" already exists. Choose another name for the new database.")
                      .arg(QDir::toNativeSeparators(target)));
        return false;
    }
    return d->userCommand(QStringLiteral("The database \"%1\" could not be created; the open database stays open.")
                          .arg(QDir::toNativeSeparators(target)),
                      [&] { d->host.newDatabase(target); });
}

void ContactsWindow::lookupText(const QString& text)
{
    d->lastLookup = text;
    if (!d->userCommand(QStringLiteral("The lookup could not be made."), [&] { d->host.lookupText(text); }))
        return;
    if (d->host.lookupIds().isEmpty())
        statusBar()->showMessage(QStringLiteral("No contact contains \"%1\".").arg(text));
}

void ContactsWindow::closeEvent(QCloseEvent* event)
{
    // Closing by the user and closing by Command 150 both tell automation once that the program goes away.
    if (!d->closing) {
        d->closing = true;
        d->userCommand(QStringLiteral("The database could not be closed cleanly."),
                       [&] { d->host.userWantsToClose(); });
    }
    event->accept();
}

} // namespace corvalent::host
