#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// The contact table of the database (Database.Contact): its field list, moving to a contact, raw field data.
class ContactObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
