#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <array>
#include <source_location>

namespace corvalent {

// What the main window shows of the contact and lets the user choose, without any widget: the ten field texts
// (txtField), whether each row's Grab button is enabled (cmdGrab), the address option (optOption) and the phone
// list (cboPhone). Contact capture writes it; the window binds its widgets to it and writes back what the user
// types or picks.
class ContactForm : public QObject {
    Q_OBJECT
public:
    static constexpr int kSlots = 10;

    enum AddressOption : int { Business = 0, Home = 1, Custom = 2 };

    // One entry of the phone list: what the list shows, and the field it stands for.
    struct PhoneEntry {
        QString text;
        qint32 fieldId = 0;
        bool operator==(const PhoneEntry&) const = default;
    };

    explicit ContactForm(QObject* parent = nullptr);

    // Slots 0 to 9; any other slot raises 9 (subscript out of range).
    QString text(int slot, std::source_location at = std::source_location::current()) const;
    void setText(int slot, const QString& text, std::source_location at = std::source_location::current());
    bool grabEnabled(int slot, std::source_location at = std::source_location::current()) const;
    void setGrabEnabled(int slot, bool enabled, std::source_location at = std::source_location::current());
    std::array<QString, kSlots> texts() const { return m_texts; }

    int addressOption() const { return m_option; }
    // 0, 1 or 2; anything else raises 5.
    void setAddressOption(int option, std::source_location at = std::source_location::current());

    const QList<PhoneEntry>& phones() const { return m_phones; }
    // The chosen entry's index, -1 when none is chosen.
    int currentPhone() const { return m_currentPhone; }
    // Replaces the list; the entry at `current` (-1 for none) becomes the chosen one.
    void setPhones(const QList<PhoneEntry>& phones, int current = -1,
                   std::source_location at = std::source_location::current());
    // -1 chooses none; an index outside the list raises 5.
    void setCurrentPhone(int index, std::source_location at = std::source_location::current());

signals:
    void textChanged(int slot);
    void grabEnabledChanged(int slot);
    void addressOptionChanged(int option);
    void phonesChanged();
    void currentPhoneChanged(int index);
    // After any of the above.
    void changed();

private:
    std::array<QString, kSlots> m_texts;
    std::array<bool, kSlots> m_grab;
    int m_option = Business;
    QList<PhoneEntry> m_phones;
    int m_currentPhone = -1;
};

} // namespace corvalent
