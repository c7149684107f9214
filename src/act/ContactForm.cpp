#include "act/ContactForm.h"

#include "common/Error.h"

namespace corvalent {

namespace {

constexpr int kSubscriptOutOfRange = 9;

void checkSlot(int slot, std::source_location at)
{
    if (slot < 0 || slot >= ContactForm::kSlots)
        throw Error(kSubscriptOutOfRange, QStringLiteral("Subscript out of range"), at);
}

} // namespace

ContactForm::ContactForm(QObject* parent)
    : QObject(parent)
{
    m_grab.fill(true);
}

QString ContactForm::text(int slot, std::source_location at) const
{
    checkSlot(slot, at);
    return m_texts[size_t(slot)];
}

void ContactForm::setText(int slot, const QString& text, std::source_location at)
{
    checkSlot(slot, at);
    QString& current = m_texts[size_t(slot)];
    if (current == text)
        return;
    current = text;
    emit textChanged(slot);
    emit changed();
}

bool ContactForm::grabEnabled(int slot, std::source_location at) const
{
    checkSlot(slot, at);
    return m_grab[size_t(slot)];
}

void ContactForm::setGrabEnabled(int slot, bool enabled, std::source_location at)
{
    checkSlot(slot, at);
    if (m_grab[size_t(slot)] == enabled)
        return;
    m_grab[size_t(slot)] = enabled;
    emit grabEnabledChanged(slot);
    emit changed();
}

void ContactForm::setAddressOption(int option, std::source_location at)
{
    if (option != Business && option != Home && option != Custom)
        throw Error(ErrorNumber::InvalidArgument, at);
    if (m_option == option)
        return;
    m_option = option;
    emit addressOptionChanged(option);
    emit changed();
}

void ContactForm::setPhones(const QList<PhoneEntry>& phones, int current, std::source_location at)
{
    if (current < -1 || current >= phones.size())
        throw Error(ErrorNumber::InvalidArgument, at);
    const bool listChanged = m_phones != phones;
    const bool currentChanged = m_currentPhone != current;
    if (!listChanged && !currentChanged)
        return;
    m_phones = phones;
    m_currentPhone = current;
    if (listChanged)
        emit phonesChanged();
    if (currentChanged)
        emit currentPhoneChanged(current);
    emit changed();
}

void ContactForm::setCurrentPhone(int index, std::source_location at)
{
    if (index < -1 || index >= m_phones.size())
        throw Error(ErrorNumber::InvalidArgument, at);
    if (m_currentPhone == index)
        return;
    m_currentPhone = index;
    emit currentPhoneChanged(index);
    emit changed();
}

} // namespace corvalent
