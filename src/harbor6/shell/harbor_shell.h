#pragma once

#include "harbor6/groundwork/export.h"

namespace harbor6 {

class Classifier;
class ClientInterface;

/// What every format and item can reach of its host. It owns neither of the two, which must outlive it.
class HARBOR6_API HarborShell {
public:
    HarborShell(Classifier& classifier, ClientInterface& client);

    Classifier& getClassifier() const;
    ClientInterface& client() const;

private:
    Classifier& registry;
    ClientInterface& decider;
};

} // namespace harbor6
