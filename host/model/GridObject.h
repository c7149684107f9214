#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// The lookup grid of the contact list: rows of the lookup, the current row, and the current contact.
class GridObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;

private:
    // The contact at a row of the lookup; Error 440 for a row that does not exist.
    qint64 contactAt(qint32 row);
};

} // namespace corvalent::host
