#include "harbor6/shell/harbor_shell.h"

namespace harbor6 {

HarborShell::HarborShell(Classifier& classifier, ClientInterface& client)
    : registry(classifier), decider(client) {}

Classifier& HarborShell::getClassifier() const {
    return registry;
}

ClientInterface& HarborShell::client() const {
    return decider;
}

} // namespace harbor6
