#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// The contact table's field list. A numeric argument addresses a position in the list (a deleted position
// answers ID -1), a text argument addresses a field by its ID.
class FieldListObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
