#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// "ACTOLE.APPOBJECT": the contact manager itself: its database, views and commands, and the user.
class ApplicationObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
