#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// A contact list view object (type 3): the way to the lookup grid.
class ContactListObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
