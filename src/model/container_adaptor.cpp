#include "model/container_adaptor.h"

namespace harbor6 {

ContainerAdaptor::~ContainerAdaptor() = default;

void ContainerAdaptor::destroy() {
    delete this;
}

StdVectorContainer::StdVectorContainer() : STLContainerAdaptor(&held) {}

StdVectorContainer::~StdVectorContainer() = default;

} // namespace harbor6
