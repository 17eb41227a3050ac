#pragma once

#include "outside/shell/attributes.h"
#include "outside/shell/mac_info.h"

namespace harbor6 {

/// Attributes with storage of their own, the template of a new file. Whoever owns them writes the members
/// directly.
class HARBOR6_API ModelAttributes : public Attributes {
public:
    ~ModelAttributes() override;

    bool modifiable(const std::string& key) override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool hasStructure(const std::string& key) const override;
    bool getStructure(const std::string& key, un::structure& value) const override;

    std::string name;
    io::mac::file_info file_info;
    io::mac::extended_file_info extended_info;

protected:
    void populateIndex() const override;
};

} // namespace harbor6
