#pragma once

#include "harbor6/groundwork/exception.h"

#include <string>

namespace support {

/// What `act` raises, as "reporting class: message", with "crc " in front of a checksum's, or the text alone;
/// "" for nothing.
template<class Act>
std::string refusal_of(Act act) {
    try {
        act();
    } catch (const format::crc_exception& failure) {
        return "crc " + failure.reporting_class() + ": " + failure.message();
    } catch (const un::exception& failure) {
        return failure.reporting_class() + ": " + failure.message();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

} // namespace support
