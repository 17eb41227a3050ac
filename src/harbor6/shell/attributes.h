#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/groundwork/time.h"
#include "harbor6/shell/keys.h"
#include "harbor6/shell/structures.h"

#include <cstdint>
#include <map>
#include <string>

namespace harbor6 {

/// Typed values that are read and set by a text key: the interface that items, forks, archives and formats
/// share. This class holds no values: each operation returns false, zero, empty or null.
///
/// A key is turned into a 16-bit id through an index. A derived class enters its keys in populateIndex,
/// overrides the access operations, switches on idFromName(key) there, and passes a key that it doesn't know
/// to its base. `has...`, `get...` and `set...` of one type are overridden together.
///
/// None of these operations raises, unless a class says otherwise. One thread at a time may use an object.
/// Without an override of newIndex each object has an index of its own, made when first needed and deleted
/// with the object. An index that a class shares among its objects is filled by the first of them, whatever
/// thread it is used by.
class HARBOR6_API Attributes {
public:
    Attributes() = default;
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    virtual ~Attributes();

    using Index = std::map<std::string, std::uint16_t>;

    /// Whether the object has a value for the key. A class may return false for a value that it computes.
    virtual bool available(const std::string& key) const;
    /// Whether the key may be set: here, whether the index contains it.
    virtual bool modifiable(const std::string& key);

    // For each type: has... tells whether a value exists, the plain name returns it, or false, empty or zero
    // if there is none, and get... stores it in `value` and returns true, or returns false, normally without
    // touching `value`. set... returns true if the value was taken.

    virtual bool hasBoolean(const std::string& key) const;
    virtual bool boolean(const std::string& key) const;
    virtual bool getBoolean(const std::string& key, bool& value) const;
    virtual bool setBoolean(const std::string& key, bool value);
    virtual bool hasString(const std::string& key) const;
    virtual std::string string(const std::string& key) const;
    virtual bool getString(const std::string& key, std::string& value) const;
    virtual bool setString(const std::string& key, const std::string& value);
    virtual bool hasTime(const std::string& key) const;
    /// Not const, as the given interface has it.
    virtual any::time time(const std::string& key);
    virtual bool getTime(const std::string& key, any::time& value) const;
    virtual bool setTime(const std::string& key, const any::time& value);
    virtual bool hasInteger(const std::string& key) const;
    virtual std::int64_t integer(const std::string& key) const;
    virtual bool getInteger(const std::string& key, std::int64_t& value) const;
    virtual bool setInteger(const std::string& key, const std::int64_t& value);
    virtual bool hasStructure(const std::string& key) const;
    /// `value` has the class that belongs to the key; false if it has another.
    virtual bool getStructure(const std::string& key, un::structure& value) const;
    virtual bool setStructure(const std::string& key, const un::structure& value);
    /// The attributes behind a key whose value is itself a set of them; not counted, null if there are none.
    virtual const Attributes* attributes(const std::string& key) const;
    virtual Attributes* attributes(const std::string& key);
    /// Sets every value that `source` has under a key of its index and that this object lets modify; "name"
    /// only if `withName`. A value that is refused is left out.
    virtual void cloneAttributes(const Attributes& source, bool withName);

    /// Whether the object has a value of any type for `key`.
    bool has(const std::string& key) const;

protected:
    /// Copies one structure from `source`; false if its class isn't known here or it is refused.
    virtual bool cloneStructure(const std::string& key, const Attributes& source);
    /// The id of `key`; key_id::unknown if the index doesn't contain it.
    virtual std::uint16_t idFromName(const std::string& key) const;
    /// Adds this class's keys to the index. Called once for an index of the object's own, and by the first
    /// use of each object for a shared one.
    virtual void populateIndex() const;
    /// The index to use, a new one here. An override returns one that it owns and that outlives the object.
    virtual Index* newIndex() const;

    /// The index, made and filled on first use.
    Index& index() const;

private:
    // In this order a derived class can use the padding behind.
    mutable Index* index_map = nullptr;
    mutable bool owns_index = false; ///< index_map is deleted with the object
};

/// The attributes of a file that is to be made: "name", "fInfo" and "fXInfo". They are read by key, and
/// written through the members by their owner.
class HARBOR6_API ModelAttributes : public Attributes {
public:
    ~ModelAttributes() override;

    /// False for every key.
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
