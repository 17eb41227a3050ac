#pragma once

#include "harbor6/model/format.h"

#include <cstdint>
#include <string_view>

namespace format::cfb {

/// Recognises compound documents in the bytes of `sample`, which the host sets and owns.
class classifier : public format::classifier {
public:
    classifier();
    ~classifier() override;

    /// 1 if the signature is at `offset` of the sample, otherwise 0.
    unsigned matches_at(unsigned offset) const override;
    /// Whether a valid header is at `offset`. A sample that ends inside it raises stream::exception.
    bool confirm_at(unsigned offset) override;
    std::string_view leading_bytes() const override;
    /// Up to the last sector in use, by the end of the table of sectors; all ones if that can't be read.
    std::uint64_t measure(stream::input& archive) override;
};

} // namespace format::cfb

namespace harbor6::cfb {

/// Compound documents as the host sees them: the container of installer databases (.msi, .msp) and of older
/// office documents. It expands archives and creates none.
class Format : public SuperFormat {
public:
    explicit Format(HarborShell* shell);
    ~Format() override;

    /// A new archive, counted for the caller, on the document that `file` stores.
    harbor6::Archive* _newArchiveAtItem(File* file, unsigned mode) override;
    format::classifier* _newClassifier() override;
};

} // namespace harbor6::cfb
