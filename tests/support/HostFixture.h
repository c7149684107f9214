#pragma once

// Shared by the capture and main window tests: a small contact database, the contact manager's model on it in this
// process, an open session, and a backend in between that logs every call and can stop answering.

#include "act/ActSession.h"
#include "common/Error.h"
#include "common/Prompter.h"
#include "model/ContactHost.h"
#include "store/ContactStore.h"
#include "support/InProcessBackend.h"
#include "support/RequestSupport.h"
#include "support/TestHome.h"

#include <QHash>
#include <QMap>
#include <QTest>
#include <memory>

namespace corvalent::test {

using Fields = QMap<int, QString>;

// Phones are given in their stored form, "+1 (514) 555-0199"; the contact view shows "(514) 555-0199".
inline const Fields kContactA{{26, "Jean Tremblay"}, {25, "Acme Ltée"}, {27, "1500 Rue Peel"}, {29, "Suite 29"},
    {30, "Montréal"}, {31, "QC"}, {32, "H3A 1S9"}, {33, "Canada"}, {35, "+1 (514) 555-0199"},
    {37, "+1 (450) 555-0111"}, {38, "+1 (514) 555-0100"}, {65, "12B Main St"}, {67, "Laval"}, {68, "QC"},
    {69, "H7A 1A1"}, {70, "Home Canada"}, {80, "u1 A"}};
inline const Fields kContactB{{26, "Anne Martin"}, {25, "Beta Inc"}, {27, "200 King St W"}, {30, "Toronto"},
    {31, "ON"}, {32, "M5H 1J9"}, {33, "Canada"}, {35, "+33 01 23 45 67 89"}, {65, "7 Elm Rd"},
    {67, "Oakville"}, {68, "ON"}, {69, "L6J 1A1"}, {70, "Home Ontario"}, {80, "u1 B"}};

// Logs each call before passing it on; once the budget is spent, every call fails with 440, as every call does
// once the contact manager has gone. Members listed in `missing` answer 438, as an older contact manager does.
class FlakyBackend : public AutomationBackend {
public:
    explicit FlakyBackend(AutomationBackend& inner) : m_inner(inner) {}
    AutomationPtr create(const QString& progId, std::source_location at) override
    {
        return wrap(m_inner.create(progId, at));
    }
    HostEvents& events() override { return m_inner.events(); }
    QString hostName() const override { return m_inner.hostName(); }

    QStringList calls;
    int budget = -1; // calls left; -1: no limit
    QHash<QString, QVariant> answers; // members answered here, as a contact manager that misbehaves would
    QStringList missing; // members answered as a contact manager without them answers (438)

private:
    struct Object : AutomationObject {
        FlakyBackend* backend = nullptr;
        AutomationPtr inner;
        QVariant invoke(const QString& member, const QVariantList& args) override
        {
            backend->calls << member;
            if (backend->answers.contains(member))
                return backend->answers.value(member);
            if (backend->missing.contains(member))
                throw Error(ErrorNumber::MemberNotSupported);
            if (backend->budget == 0)
                throw Error(ErrorNumber::AutomationError);
            if (backend->budget > 0)
                --backend->budget;
            const QVariant result = inner->invoke(member, args);
            return holdsObject(result) ? toVariant(backend->wrap(toObject(result))) : result;
        }
    };
    AutomationPtr wrap(AutomationPtr inner)
    {
        auto object = std::make_shared<Object>();
        object->backend = this;
        object->inner = std::move(inner);
        return object;
    }
    AutomationBackend& m_inner;
};

// A contact manager on a new database holding `contacts`, with an open session through a FlakyBackend.
class HostFixture {
public:
    explicit HostFixture(const QList<Fields>& contacts = {kContactA, kContactB})
    {
        const QString path = home.file(QStringLiteral("contacts.cvdb"));
        {
            host::ContactStore store;
            store.create(path);
            for (const Fields& fields : contacts) {
                ids << store.addContact();
                for (auto it = fields.begin(); it != fields.end(); ++it)
                    store.setFieldText(ids.last(), it.key(), it.value());
            }
        }
        host.openDatabase(path);
        host.moveTo(ids.first());
        session.OpenSession(backend);
        backend.calls.clear();
    }
    // The session reads from the contact view with `contact` current.
    void viewContact(int contact)
    {
        host.moveTo(ids[contact]);
        session.useContactView(session.createView(ActSession::kCreateContactView));
    }

    TestHome home;
    host::ContactHost host;
    InProcessBackend inProcess{host};
    FlakyBackend backend{inProcess};
    ActSession session;
    QList<qint64> ids;
};

} // namespace corvalent::test
