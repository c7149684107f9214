#pragma once

#include "common/Automation.h"
#include "store/ContactStore.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace corvalent::host {

// The running contact manager: the open database, the lookup (the current set of contacts), the current
// contact, the active view. Its window and its automation objects both work through it, so a change made by
// either is seen by the other, and every change fires the matching event.
class ContactHost : public QObject {
    Q_OBJECT
public:
    enum class View { Contact, ContactList };
    Q_ENUM(View)
    // The Type the active view reports: 2 exactly when the contact view is active.
    static constexpr int kContactViewType = 2;
    static constexpr int kContactListViewType = 3;

    explicit ContactHost(QObject* parent = nullptr);
    ~ContactHost() override;

    // Opens or creates a database; the lookup becomes all contacts and the first one is current. A database open
    // before is closed first (OnDatabaseClose); then databaseOpened and OnContactLookupChange fire. A file that
    // cannot be opened is refused before anything changes.
    void openDatabase(const QString& path);
    void newDatabase(const QString& path);
    void closeDatabase(); // fires OnDatabaseClose
    bool isDatabaseOpen() const;
    ContactStore& store();

    // The lookup and the current contact.
    const QVector<qint64>& lookupIds() const;
    int currentRow() const;    // row of the current contact in the lookup, -1 when the lookup is empty
    qint64 currentId() const;  // -1 when none
    void lookupAll();                     // fires OnContactLookupChange
    void lookupText(const QString& text); // fires OnContactLookupChange
    void moveToRow(int row);              // fires OnContactPosChange when the current contact changes
    void moveTo(qint64 contactId);        // the same by ID; a contact outside the lookup joins it (and
                                          // OnContactLookupChange fires before OnContactPosChange)
    void first();
    void previous();
    void next();
    void last();
    void goToMyRecord();

    // Editing the current contact, by the window or by automation: fires OnContactChange.
    void setField(int fieldId, const QString& text);
    // A new empty contact becomes current; as the real thing does, this fires a lookup change.
    qint64 addNewContact();

    View activeView() const;
    void setActiveView(View view);

    // A client writing several fields stops the window repainting until it is done, for at most kMaxUpdateLockMs.
    static constexpr int kMaxUpdateLockMs = 5000;
    void lockWindowUpdate(bool locked);
    bool isWindowUpdateLocked() const;

    // Command numbers of the application object: 104 refreshes the views, 150 closes the program.
    void command(int number);

    // A new automation object for a ProgID; throws Error 429 for an unknown ProgID.
    AutomationPtr createObject(const QString& progId);

    // The user asks to close the program (window closed): fires OnActUserWantsToClose, then closes the database.
    void userWantsToClose();

signals:
    void OnActUserWantsToClose();
    void OnDatabaseClose();
    void OnContactChange(const QString& contactId);
    void OnContactLookupChange();
    void OnContactPosChange(const QString& contactId);

    // For the window.
    void refreshRequested();     // Command(104)
    void closeRequested();       // Command(150)
    void activeViewChanged(View view);
    void windowUpdateLocked(bool locked);
    void databaseOpened(const QString& path);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace corvalent::host
