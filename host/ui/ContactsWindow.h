#pragma once

#include <QMainWindow>
#include <memory>

namespace corvalent::host {

class ContactHost;

// The contact manager's window: contact view, contact list view, navigation, editing, lookup, the toolbar and
// Tools menu with the auxiliary commands of the active view, open/new database, My Record.
class ContactsWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit ContactsWindow(ContactHost& host, QWidget* parent = nullptr);
    ~ContactsWindow() override;

public slots:
    // What the menu commands do once their dialog has been answered. Each reports a failure to the user
    // (through the installed prompter) and answers whether it succeeded; a failure changes nothing.
    bool openDatabaseFile(const QString& path);
    bool newDatabaseFile(const QString& path);
    void lookupText(const QString& text);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace corvalent::host
