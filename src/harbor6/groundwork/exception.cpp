#include "harbor6/groundwork/exception.h"

#include "harbor6/groundwork/text.h"

// The destructors are defined here, and with them each class's table and type information.

namespace qpthr {

QpException::~QpException() = default;

QpClonedException::~QpClonedException() = default;

std::unique_ptr<basic::cloneable_exception> QpClonedException::clone() const {
    return Clone();
}

void QpClonedException::raise() const {
    Raise();
}

QpUserException::QpUserException(int code, const char* message) : number(code), text(message) {}

QpUserException::~QpUserException() = default;

int QpUserException::code() const {
    return number;
}

const char* QpUserException::what() const noexcept {
    return text.c_str();
}

} // namespace qpthr

namespace un {

exception::exception(const std::string& message, const std::string& reporting_class)
    : Cloneable(0, message.c_str()), reporter(reporting_class) {}

exception::~exception() = default;

std::string exception::message() const {
    return what();
}

const std::string& exception::reporting_class() const {
    return reporter;
}

implemented::implemented(const std::string& operation) : Cloneable(operation, "un::implemented") {}

implemented::~implemented() = default;

} // namespace un

namespace stream {

exception::~exception() = default;

cut_short::cut_short(std::uint64_t end, const std::string& reporting_class)
    : Cloneable("cut short: the input ends at byte " + un::write(end, 10, 1), reporting_class) {}

cut_short::~cut_short() = default;

} // namespace stream

namespace algorithm {

exception::~exception() = default;

} // namespace algorithm

namespace fs {

Exception::~Exception() = default;

} // namespace fs

namespace format {

exception::~exception() = default;

crc_exception::~crc_exception() = default;

void adapt_exception() {
    if (!std::current_exception())
        return;
    try {
        throw;
    } catch (const basic::exception& failure) {
        throw exception(failure.what(), "format::exception");
    } catch (...) {
    }
}

} // namespace format

namespace harbor6 {

counted_ptr_null::counted_ptr_null() : Cloneable("stream holder is empty", "harbor6::counted_ptr_null") {}

counted_ptr_null::~counted_ptr_null() = default;

} // namespace harbor6

namespace basic {

cloneable_exception::~cloneable_exception() = default;

exception::exception(const std::string& message) : text(message) {}

exception::~exception() = default;

const char* exception::what() const noexcept {
    return text.c_str();
}

bad_alloc::~bad_alloc() = default;

thread_exception::~thread_exception() = default;

algorithm_exception::~algorithm_exception() = default;

cancel_exception::~cancel_exception() = default;

digest_exception::~digest_exception() = default;

} // namespace basic

namespace nio {

exception::~exception() = default;

} // namespace nio
