#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// "ACTOLE.DATABASE": the open database and its contact table.
class DatabaseObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
