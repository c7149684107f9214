#pragma once

#include "act/AutomationBackend.h"
#include "common/Automation.h"

#include <QHash>
#include <QList>
#include <QString>
#include <array>
#include <memory>
#include <optional>
#include <source_location>

namespace corvalent {

class FieldListCache;

// The contact manager's session objects, held for the life of the main window, and the typed operations the
// program makes on them. This is the one place that knows member names: everything else asks for "the text of
// field 27" and never for "GetField".
//
// Every operation takes the caller's source location as its last argument, so that a failing call is reported
// at the line of the procedure that made it. A call on an object that is not there (the session is not open,
// or no capture has chosen a field source yet) raises 91.
class ActSession {
public:
    static constexpr int kObjectNotSet = 91;

    // View types given to createView and answered by activeViewType.
    static constexpr qint16 kCreateContactView = 1;
    static constexpr qint16 kCreateListView = 2;
    static constexpr qint32 kActiveContactView = 2;

    // Command numbers of the application object.
    static constexpr qint16 kCommandRefresh = 104;
    static constexpr qint16 kCommandClose = 150;

    // The fields a service's rows 0 to 9 default to: contact, company, address, city, state, zip, country.
    static constexpr std::array<const char*, 10> kDefaultFieldIds{"26", "25", "27", "30", "31",
                                                                  "32", "33", "0",  "0",  "0"};

    ActSession();
    ~ActSession();
    ActSession(const ActSession&) = delete;
    ActSession& operator=(const ActSession&) = delete;

    // Opens the session in this order: App and App.OpenFile(""), Database and Database.OpenEx(""), ContactFields
    // (Database.Contact.Fields), Views (App.Views), DefaultFieldIds. Objects obtained before a failure stay set.
    void OpenSession(AutomationBackend& backend, std::source_location at = std::source_location::current());
    bool isOpen() const { return m_views != nullptr; }

    // Creates the event control. The main window does this before OpenSession, to ask whether the contact
    // manager is there at all.
    void attachEvents(AutomationBackend& backend, std::source_location at = std::source_location::current());

    // Forgets App after the contact manager was asked to close, as the restart after integration does.
    void releaseApp() { m_app.reset(); }

    const AutomationPtr& App() const { return m_app; }
    const AutomationPtr& Database() const { return m_database; }
    const AutomationPtr& ContactFields() const { return m_contactFields; }
    const AutomationPtr& Views() const { return m_views; }
    const AutomationPtr& eventControl() const { return m_events; }
    const AutomationPtr& fieldSource() const { return m_fieldSource; }
    const AutomationPtr& listView() const { return m_listView; }
    // The lookup row the latest capture read from the grid; empty when it read the contact view.
    std::optional<qint32> gridRow() const { return m_gridRow; }

    std::array<QString, 10> DefaultFieldIds;

    // Application.
    QString getOpenDbName(std::source_location at = std::source_location::current());
    void command(qint16 number, std::source_location at = std::source_location::current());
    QString getUserId(std::source_location at = std::source_location::current());
    // Stops (or lets again) the contact manager's window repainting while several fields are written, so that it
    // repaints once at the end. A contact manager without the members is left to repaint as it likes.
    void lockWindowUpdate(bool locked, std::source_location at = std::source_location::current());

    // Views: the Type of the active view, a new view object ("CV") of a type, a list view's grid, a grid's row.
    qint32 activeViewType(std::source_location at = std::source_location::current());
    AutomationPtr createView(qint16 type, std::source_location at = std::source_location::current());
    AutomationPtr getGrid(const AutomationPtr& listView, std::source_location at = std::source_location::current());
    qint32 currentRow(const AutomationPtr& grid, std::source_location at = std::source_location::current());

    // Capture chooses where fields are read and written: the contact view, or a list view's grid at a row.
    void useContactView(AutomationPtr view);
    void useGrid(AutomationPtr listView, AutomationPtr grid, qint32 row);

    // Reads fields of the field source (at the kept row on the grid) in one round trip where the contact manager
    // offers GetFields, and keeps their texts for getField and readField until the source changes or the contact
    // manager is told to change something: a capture and the phone list after it then cost one call instead of
    // one per field. A contact manager without GetFields is asked once per session; after that the fields are
    // read one call each, as they are asked for.
    void readAhead(const QList<qint32>& fieldIds, std::source_location at = std::source_location::current());

    // The field source of the latest capture. getField(id) is the contact view's form, getField(id, row) the
    // grid's; readField picks the form that fits the source (the kept row on the grid). Field 0 names no field:
    // readField answers "" for it without a round trip.
    QString getField(qint32 fieldId, std::source_location at = std::source_location::current());
    QString getField(qint32 fieldId, qint32 row, std::source_location at = std::source_location::current());
    QString readField(qint32 fieldId, std::source_location at = std::source_location::current());
    void setField(qint32 fieldId, const QString& text, std::source_location at = std::source_location::current());
    void addNewContact(std::source_location at = std::source_location::current());
    QString getCurrentId(std::source_location at = std::source_location::current());

    // The database's contact object.
    void goTo(const QString& contactId, std::source_location at = std::source_location::current());
    QString contactData(qint16 fieldId, std::source_location at = std::source_location::current());

    // The open database's field list, each answer asked once per session: the add-on closes with the database,
    // so a session never sees the list change.
    FieldListCache& fields() { return *m_fields; }

    // The field list: by position (gaps answer ID -1), or by field ID given as text.
    qint32 fieldCount(std::source_location at = std::source_location::current());
    qint32 fieldIdAt(qint32 position, std::source_location at = std::source_location::current());
    qint32 typeAt(qint32 position, std::source_location at = std::source_location::current());
    QString labelAt(qint32 position, std::source_location at = std::source_location::current());
    qint32 fieldType(const QString& fieldId, std::source_location at = std::source_location::current());
    QString label(const QString& fieldId, std::source_location at = std::source_location::current());
    bool hasPopupList(const QString& fieldId, std::source_location at = std::source_location::current());

    // The auxiliary commands: programs the contact manager offers as toolbar buttons and Tools-menu entries, per
    // view 1 to 6. The object is made by createAuxCommands; every other call raises 91 until then.
    struct AuxCommand {
        QString name;
        QString program;
        QString folder;
        QString title;
        QString hint;
        QString smallIcon;
        QString largeIcon;
        qint32 flags = 1;
    };
    void createAuxCommands(AutomationBackend& backend, std::source_location at = std::source_location::current());
    bool auxCommandExists(const QString& name, std::source_location at = std::source_location::current());
    // Answers 0 on success.
    qint32 addAuxCommand(const AuxCommand& command, std::source_location at = std::source_location::current());
    bool auxCommandInToolbar(const QString& name, qint16 view,
                             std::source_location at = std::source_location::current());
    bool auxCommandInToolsMenu(const QString& name, qint16 view,
                               std::source_location at = std::source_location::current());
    void placeAuxCommandInToolbar(const QString& name, qint16 view, bool placed,
                                  std::source_location at = std::source_location::current());
    void placeAuxCommandInToolsMenu(const QString& name, qint16 view, bool placed,
                                    std::source_location at = std::source_location::current());

    // The event control, by its dispatch numbers 1, 2 and 3.
    bool isDatabaseOpen(std::source_location at = std::source_location::current());
    void detach(std::source_location at = std::source_location::current());
    bool isRunning(std::source_location at = std::source_location::current());

private:
    AutomationPtr m_app;
    AutomationPtr m_database;
    AutomationPtr m_contact; // Database.Contact, kept from OpenSession for GoTo and Data
    AutomationPtr m_contactFields;
    AutomationPtr m_views;
    AutomationPtr m_events;
    AutomationPtr m_auxCommands;
    AutomationPtr m_fieldSource;
    AutomationPtr m_listView;
    std::optional<qint32> m_gridRow;
    std::unique_ptr<FieldListCache> m_fields;
    std::optional<bool> m_offersGetFields; // unknown until first asked
    QHash<qint32, QString> m_readAhead;
};

} // namespace corvalent
