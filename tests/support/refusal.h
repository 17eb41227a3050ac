#pragma once

#include "harbor6/groundwork/exception.h"

#include <string>

namespace support {

/// The exception that `act` raises, as "reporting class: message", preceded by "crc " if it is a
/// format::crc_exception; only what() if it is not an un::exception; "" if there is none.
template<class Act>
std::string refusal_of(Act act) {
    try {
        act();
    } catch (const un::exception& failure) {
        const bool crc = dynamic_cast<const format::crc_exception*>(&failure) != nullptr;
        return (crc ? "crc " : "") + failure.reporting_class() + ": " + failure.message();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

} // namespace support
