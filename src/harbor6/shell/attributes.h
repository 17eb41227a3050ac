#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/groundwork/time.h"
#include "harbor6/shell/keys.h"
#include "harbor6/shell/structures.h"

#include <cstdint>
#include <map>
#include <string>

namespace un {
class structure;
} // namespace un

namespace harbor6 {

/// A bag of typed values reached by a text key: the face that items, forks, archives and formats show to
/// their users.
///
/// A key is turned into a 16-bit id through an index. A derived class enters its keys in populateIndex,
/// overrides the access operations, switches on idFromName(key) there and leaves what it doesn't know to its
/// base. This class holds no values: it answers false, empty or zero. `has...` and `get...` of the same type
/// go together; a `get...` that answers false leaves the value alone unless a class says otherwise.
///
/// Without an override of newIndex each object has an index of its own, made when first needed. Filling an
/// index isn't locked: the first use of a class's shared index must not race.
class HARBOR6_API Attributes {
public:
    Attributes() = default;
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    virtual ~Attributes();

    using Index = std::map<std::string, std::uint16_t>;

    /// The key exists and has a value for this object.
    virtual bool available(const std::string& key) const;
    /// The key may be set; here: the index knows it.
    virtual bool modifiable(const std::string& key);
    virtual bool hasBoolean(const std::string& key) const;
    virtual bool boolean(const std::string& key) const;
    virtual bool getBoolean(const std::string& key, bool& value) const;
    virtual bool setBoolean(const std::string& key, bool value);
    virtual bool hasString(const std::string& key) const;
    virtual std::string string(const std::string& key) const;
    virtual bool getString(const std::string& key, std::string& value) const;
    virtual bool setString(const std::string& key, const std::string& value);
    virtual bool hasTime(const std::string& key) const;
    virtual any::time time(const std::string& key);
    virtual bool getTime(const std::string& key, any::time& value) const;
    virtual bool setTime(const std::string& key, const any::time& value);
    virtual bool hasInteger(const std::string& key) const;
    virtual std::int64_t integer(const std::string& key) const;
    virtual bool getInteger(const std::string& key, std::int64_t& value) const;
    virtual bool setInteger(const std::string& key, const std::int64_t& value);
    virtual bool hasStructure(const std::string& key) const;
    virtual bool getStructure(const std::string& key, un::structure& value) const;
    virtual bool setStructure(const std::string& key, const un::structure& value);
    virtual const Attributes* attributes(const std::string& key) const;
    virtual Attributes* attributes(const std::string& key);
    /// Copies every value that `source` has and this object accepts, the name only if `withName`.
    virtual void cloneAttributes(const Attributes& source, bool withName);

    /// Whether the object holds a value of any type for `key`.
    bool has(const std::string& key) const;

protected:
    /// Copies one structure; false if it couldn't.
    virtual bool cloneStructure(const std::string& key, const Attributes& source);
    /// The id of `key`, key_id::unknown for one that the index doesn't hold.
    virtual std::uint16_t idFromName(const std::string& key) const;
    /// Adds this class's keys to the index.
    virtual void populateIndex() const;
    /// Gives the index to use; a class that shares one among its objects overrides this.
    virtual Index* newIndex() const;

    /// The index, made and filled on first use.
    Index& index() const;

private:
    mutable bool owns_index = false; ///< the index is this object's own
    mutable Index* index_map = nullptr;
};

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
