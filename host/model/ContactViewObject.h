#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// A contact view object (type 2): reads and writes the current contact at the moment of each call.
class ContactViewObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
