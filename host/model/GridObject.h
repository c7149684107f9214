#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// The lookup grid of the contact list: rows of the lookup, the current row, and the current contact.
class GridObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
