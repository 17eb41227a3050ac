#pragma once

#include "harbor6/groundwork/export.h"

namespace harbor6 {

class Classifier;
class ClientInterface;

/// Through this every format and item reaches its host: the registry of formats and the client that decides.
/// It owns neither, and both must outlive it.
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
