#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// "ACTOLE.AUXCMDS": programs added to the toolbar and the Tools menu, per view 1 to 6.
class AuxCommandsObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;
};

} // namespace corvalent::host
