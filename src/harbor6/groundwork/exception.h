#pragma once

// The exception tree. Every failure of the system is one of these classes or derives from one. Each can be
// cloned and the clone raised, which is how a failure moves from a worker thread to the thread that joins it.
// All are defined once, in libharbor6, so that a handler in a host or a format matches what another library
// throws.
//
//   qpthr::QpException
//     basic::cloneable_exception
//       qpthr::QpClonedException        forwards clone and raise to Clone and Raise
//         qpthr::QpUserException
//           un::exception               message and reporting class
//             un::implemented, algorithm::exception, fs::Exception, harbor6::counted_ptr_null,
//             stream::exception - stream::cut_short, format::exception - format::crc_exception
//       basic::exception                one text
//         basic::bad_alloc, basic::thread_exception, basic::algorithm_exception,
//         basic::cancel_exception, basic::digest_exception, nio::exception
//
// An exception object belongs to one thread at a time. Constructors and clones that run out of memory raise
// std::bad_alloc.

#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

namespace qpthr {

/// The root of the tree.
class HARBOR6_API QpException : public std::exception {
public:
    QpException() = default;
    QpException(const QpException&) = default;
    QpException& operator=(const QpException&) = default;
    ~QpException() override;
};

} // namespace qpthr

namespace basic {

class HARBOR6_API cloneable_exception : public qpthr::QpException {
public:
    ~cloneable_exception() override;

    /// A copy of this exception, of the same class unless that class documents another.
    virtual std::unique_ptr<cloneable_exception> clone() const = 0;
    /// Throws a copy of this exception, of the class that clone() returns.
    virtual void raise() const = 0;
};

/// Inserted between `Self`, a class of the basic branch, and its base class `Base`: clone and raise make
/// objects of class `Self`.
template<class Self, class Base>
class HARBOR6_API cloneable : public Base {
public:
    using Base::Base;

    std::unique_ptr<cloneable_exception> clone() const override {
        return std::make_unique<Self>(static_cast<const Self&>(*this));
    }
    void raise() const override { throw Self(static_cast<const Self&>(*this)); }
};

} // namespace basic

namespace qpthr {

class HARBOR6_API QpClonedException : public basic::cloneable_exception {
public:
    ~QpClonedException() override;

    std::unique_ptr<basic::cloneable_exception> clone() const override;
    void raise() const override;

    /// As clone() and raise(), which call these.
    virtual std::unique_ptr<basic::cloneable_exception> Clone() const = 0;
    virtual void Raise() const = 0;
};

/// basic::cloneable for the classes below QpClonedException: Clone and Raise make objects of class `Self`.
template<class Self, class Base>
class HARBOR6_API Cloneable : public Base {
public:
    using Base::Base;

    std::unique_ptr<basic::cloneable_exception> Clone() const override {
        return std::make_unique<Self>(static_cast<const Self&>(*this));
    }
    void Raise() const override { throw Self(static_cast<const Self&>(*this)); }
};

/// A failure with a number and a text.
class HARBOR6_API QpUserException : public QpClonedException {
public:
    /// Copies `text`, which is not null.
    QpUserException(int code, const char* text);
    ~QpUserException() override;

    int code() const;
    const char* what() const noexcept override;

private:
    int number;
    std::string text;
};

} // namespace qpthr

namespace un {

/// A failure with a message for people and the name of the class that reports it.
class HARBOR6_API exception : public qpthr::Cloneable<exception, qpthr::QpUserException> {
public:
    exception(const std::string& message, const std::string& reporting_class);
    ~exception() override;

    std::string message() const;
    const std::string& reporting_class() const;

private:
    std::string reporter;
};

/// An operation that a class doesn't provide; the message is the operation's name.
class HARBOR6_API implemented : public qpthr::Cloneable<implemented, exception> {
public:
    explicit implemented(const std::string& operation);
    ~implemented() override;
};

} // namespace un

namespace stream {

/// A failure of a stream. The end of the data is none.
class HARBOR6_API exception : public qpthr::Cloneable<exception, un::exception> {
public:
    using Cloneable::Cloneable;
    ~exception() override;
};

/// The input ended before something that must be complete.
class HARBOR6_API cut_short : public qpthr::Cloneable<cut_short, exception> {
public:
    /// `end` is the number of bytes in the input.
    cut_short(std::uint64_t end, const std::string& reporting_class);
    ~cut_short() override;
};

} // namespace stream

namespace algorithm {

/// A failure of a decoder or digest.
class HARBOR6_API exception : public qpthr::Cloneable<exception, un::exception> {
public:
    using Cloneable::Cloneable;
    ~exception() override;
};

} // namespace algorithm

namespace fs {

/// A failure of the file system.
class HARBOR6_API Exception : public qpthr::Cloneable<Exception, un::exception> {
public:
    using Cloneable::Cloneable;
    ~Exception() override;
};

} // namespace fs

namespace format {

/// The content of an archive is invalid or not supported.
class HARBOR6_API exception : public qpthr::Cloneable<exception, un::exception> {
public:
    using Cloneable::Cloneable;
    ~exception() override;
};

/// A checksum mismatch. Clone and Raise make plain format::exception objects of it.
class HARBOR6_API crc_exception : public exception {
public:
    using exception::exception;
    ~crc_exception() override;
};

/// Called inside a handler: if the exception being handled is a basic::exception, raises a format::exception
/// with the same text. Otherwise, or without an exception being handled, returns.
HARBOR6_API void adapt_exception();

} // namespace format

namespace harbor6 {

/// Use of an empty stream holder.
class HARBOR6_API counted_ptr_null : public qpthr::Cloneable<counted_ptr_null, un::exception> {
public:
    counted_ptr_null();
    ~counted_ptr_null() override;
};

} // namespace harbor6

namespace basic {

/// A failure of the lower layers, with one text.
class HARBOR6_API exception : public cloneable<exception, cloneable_exception> {
public:
    explicit exception(const std::string& text);
    ~exception() override;

    const char* what() const noexcept override;

private:
    std::string text;
};

/// A worker ran out of memory.
class HARBOR6_API bad_alloc : public cloneable<bad_alloc, exception> {
public:
    using cloneable::cloneable;
    ~bad_alloc() override;
};

/// A worker threw something outside this tree.
class HARBOR6_API thread_exception : public cloneable<thread_exception, exception> {
public:
    using cloneable::cloneable;
    ~thread_exception() override;
};

/// A corrupt Deflate stream.
class HARBOR6_API algorithm_exception : public cloneable<algorithm_exception, exception> {
public:
    using cloneable::cloneable;
    ~algorithm_exception() override;
};

/// Ends a worker without a failure.
class HARBOR6_API cancel_exception : public cloneable<cancel_exception, exception> {
public:
    using cloneable::cloneable;
    ~cancel_exception() override;
};

/// A digest mismatch that a host's streams report; nothing in this library raises it.
class HARBOR6_API digest_exception : public cloneable<digest_exception, exception> {
public:
    using cloneable::cloneable;
    ~digest_exception() override;
};

} // namespace basic

namespace nio {

/// A failure of an nio stream.
class HARBOR6_API exception : public basic::cloneable<exception, basic::exception> {
public:
    using cloneable::cloneable;
    ~exception() override;
};

} // namespace nio
