#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// The views of the contact manager (App.Views): the active one, and view objects made on request.
class ViewsObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
