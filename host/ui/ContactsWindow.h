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

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace corvalent::host
