#include "harbor6/groundwork/exception.h"

#include "harbor6/groundwork/text.h"

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

namespace basic {

cloneable_exception::~cloneable_exception() = default;

} // namespace basic

namespace un {

exception::exception(const std::string& message, const std::string& reporting_class)
    : QpUserException(0, message.c_str()), reporter(reporting_class) {}

std::string exception::message() const {
    return what();
}

const std::string& exception::reporting_class() const {
    return reporter;
}

implemented::implemented(const std::string& operation) : exception(operation, "un::implemented") {}

} // namespace un

namespace harbor6 {

counted_ptr_null::counted_ptr_null() : exception("stream holder is empty", "harbor6::counted_ptr_null") {}

} // namespace harbor6

namespace basic {

exception::exception(const std::string& message) : text(message) {}

const char* exception::what() const noexcept {
    return text.c_str();
}

} // namespace basic

namespace format {

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

// Every class that travels copies and raises itself in the same way.

namespace un {

exception::~exception() = default;

std::unique_ptr<basic::cloneable_exception> exception::Clone() const {
    return std::make_unique<exception>(*this);
}

void exception::Raise() const {
    throw exception(*this);
}

implemented::~implemented() = default;

std::unique_ptr<basic::cloneable_exception> implemented::Clone() const {
    return std::make_unique<implemented>(*this);
}

void implemented::Raise() const {
    throw implemented(*this);
}

} // namespace un

namespace stream {

exception::~exception() = default;

std::unique_ptr<basic::cloneable_exception> exception::Clone() const {
    return std::make_unique<exception>(*this);
}

void exception::Raise() const {
    throw exception(*this);
}

cut_short::cut_short(std::uint64_t end, const std::string& reporting_class)
    : exception("cut short: the input ends at byte " + un::write(end, 10, 1), reporting_class) {}

cut_short::~cut_short() = default;

std::unique_ptr<basic::cloneable_exception> cut_short::Clone() const {
    return std::make_unique<cut_short>(*this);
}

void cut_short::Raise() const {
    throw cut_short(*this);
}

} // namespace stream

namespace algorithm {

exception::~exception() = default;

std::unique_ptr<basic::cloneable_exception> exception::Clone() const {
    return std::make_unique<exception>(*this);
}

void exception::Raise() const {
    throw exception(*this);
}

} // namespace algorithm

namespace fs {

Exception::~Exception() = default;

std::unique_ptr<basic::cloneable_exception> Exception::Clone() const {
    return std::make_unique<Exception>(*this);
}

void Exception::Raise() const {
    throw Exception(*this);
}

} // namespace fs

namespace format {

exception::~exception() = default;

std::unique_ptr<basic::cloneable_exception> exception::Clone() const {
    return std::make_unique<exception>(*this);
}

void exception::Raise() const {
    throw exception(*this);
}

} // namespace format

namespace harbor6 {

counted_ptr_null::~counted_ptr_null() = default;

std::unique_ptr<basic::cloneable_exception> counted_ptr_null::Clone() const {
    return std::make_unique<counted_ptr_null>(*this);
}

void counted_ptr_null::Raise() const {
    throw counted_ptr_null(*this);
}

} // namespace harbor6

namespace basic {

exception::~exception() = default;

std::unique_ptr<cloneable_exception> exception::clone() const {
    return std::make_unique<exception>(*this);
}

void exception::raise() const {
    throw exception(*this);
}

bad_alloc::~bad_alloc() = default;

std::unique_ptr<cloneable_exception> bad_alloc::clone() const {
    return std::make_unique<bad_alloc>(*this);
}

void bad_alloc::raise() const {
    throw bad_alloc(*this);
}

thread_exception::~thread_exception() = default;

std::unique_ptr<cloneable_exception> thread_exception::clone() const {
    return std::make_unique<thread_exception>(*this);
}

void thread_exception::raise() const {
    throw thread_exception(*this);
}

algorithm_exception::~algorithm_exception() = default;

std::unique_ptr<cloneable_exception> algorithm_exception::clone() const {
    return std::make_unique<algorithm_exception>(*this);
}

void algorithm_exception::raise() const {
    throw algorithm_exception(*this);
}

cancel_exception::~cancel_exception() = default;

std::unique_ptr<cloneable_exception> cancel_exception::clone() const {
    return std::make_unique<cancel_exception>(*this);
}

void cancel_exception::raise() const {
    throw cancel_exception(*this);
}

digest_exception::~digest_exception() = default;

std::unique_ptr<cloneable_exception> digest_exception::clone() const {
    return std::make_unique<digest_exception>(*this);
}

void digest_exception::raise() const {
    throw digest_exception(*this);
}

} // namespace basic

namespace nio {

exception::~exception() = default;

std::unique_ptr<basic::cloneable_exception> exception::clone() const {
    return std::make_unique<exception>(*this);
}

void exception::raise() const {
    throw exception(*this);
}

} // namespace nio
