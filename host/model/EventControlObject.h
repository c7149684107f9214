#pragma once

#include "model/ModelObject.h"

namespace corvalent::host {

// "ACTEVENTLib.ActEvent": the event control a client places to hear the five events. The events themselves are
// ContactHost's signals; a transport sends them to each control that is not detached().
class EventControlObject : public ModelObject {
public:
    using ModelObject::ModelObject;
    QVariant invoke(const QString& member, const QVariantList& args = {}) override;

    bool detached() const { return m_detached; }

private:
    bool m_detached = false;
};

} // namespace corvalent::host
