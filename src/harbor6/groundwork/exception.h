#pragma once

// The exception tree. Every failure of the system is one of these classes. Each can be copied (`clone`) and
// the copy raised again (`raise`), which is how a failure crosses from a worker thread to the thread that
// joins it.
//
//   qpthr::QpException
//     basic::cloneable_exception
//       qpthr::QpClonedException        forwards clone and raise to Clone and Raise
//         qpthr::QpUserException
//           un::exception               message and reporting class
//             un::implemented, stream::exception, algorithm::exception, fs::Exception,
//             harbor6::counted_ptr_null, format::exception, format::crc_exception, stream::cut_short, ...
//       basic::exception                one text
//         basic::bad_alloc, basic::thread_exception, basic::algorithm_exception,
//         basic::cancel_exception, basic::digest_exception, nio::exception

#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

namespace qpthr {

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

    /// A copy of this exception, of the same class as far as that class can be copied.
    virtual std::unique_ptr<cloneable_exception> clone() const = 0;
    /// Throws a copy of this exception.
    virtual void raise() const = 0;
};

} // namespace basic

namespace qpthr {

class HARBOR6_API QpClonedException : public basic::cloneable_exception {
public:
    ~QpClonedException() override;

    std::unique_ptr<basic::cloneable_exception> clone() const override;
    void raise() const override;

    virtual std::unique_ptr<basic::cloneable_exception> Clone() const = 0;
    virtual void Raise() const = 0;
};

class HARBOR6_API QpUserException : public QpClonedException {
public:
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
class HARBOR6_API exception : public qpthr::QpUserException {
public:
    exception(const std::string& message, const std::string& reporting_class);
    ~exception() override;

    std::string message() const;
    const std::string& reporting_class() const;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;

private:
    std::string reporter;
};

/// An operation that a class doesn't provide; the text is the operation's name.
class HARBOR6_API implemented : public exception {
public:
    explicit implemented(const std::string& operation);
    ~implemented() override;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;
};

} // namespace un

namespace stream {

class HARBOR6_API exception : public un::exception {
public:
    using un::exception::exception;
    ~exception() override;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;
};

/// The input ended in the middle of something that had to be whole.
class HARBOR6_API cut_short : public exception {
public:
    /// `end` is the number of bytes that came.
    cut_short(std::uint64_t end, const std::string& reporting_class);
    ~cut_short() override;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;
};

} // namespace stream

namespace algorithm {

class HARBOR6_API exception : public un::exception {
public:
    using un::exception::exception;
    ~exception() override;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;
};

} // namespace algorithm

namespace fs {

/// A failure of the file system.
class HARBOR6_API Exception : public un::exception {
public:
    using un::exception::exception;
    ~Exception() override;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;
};

} // namespace fs

namespace format {

/// A refusal of an archive's content.
class HARBOR6_API exception : public un::exception {
public:
    using un::exception::exception;
    ~exception() override;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;
};

/// A checksum that doesn't fit. Copies of it are plain format::exception objects.
class HARBOR6_API crc_exception : public exception {
public:
    using exception::exception;
    ~crc_exception() override;
};

/// Called inside a handler: raises the basic::exception in flight again as a format::exception with the same
/// text. Returns if something else is in flight, or nothing.
HARBOR6_API void adapt_exception();

} // namespace format

namespace harbor6 {

/// Use of an empty stream holder.
class HARBOR6_API counted_ptr_null : public un::exception {
public:
    counted_ptr_null();
    ~counted_ptr_null() override;

    std::unique_ptr<basic::cloneable_exception> Clone() const override;
    void Raise() const override;
};

} // namespace harbor6

namespace basic {

/// A failure of the lower layers, with one text.
class HARBOR6_API exception : public cloneable_exception {
public:
    explicit exception(const std::string& text);
    ~exception() override;

    const char* what() const noexcept override;

    std::unique_ptr<cloneable_exception> clone() const override;
    void raise() const override;

private:
    std::string text;
};

class HARBOR6_API bad_alloc : public exception {
public:
    using exception::exception;
    ~bad_alloc() override;

    std::unique_ptr<cloneable_exception> clone() const override;
    void raise() const override;
};

class HARBOR6_API thread_exception : public exception {
public:
    using exception::exception;
    ~thread_exception() override;

    std::unique_ptr<cloneable_exception> clone() const override;
    void raise() const override;
};

/// A corrupt Deflate stream.
class HARBOR6_API algorithm_exception : public exception {
public:
    using exception::exception;
    ~algorithm_exception() override;

    std::unique_ptr<cloneable_exception> clone() const override;
    void raise() const override;
};

/// Ends a worker quietly.
class HARBOR6_API cancel_exception : public exception {
public:
    using exception::exception;
    ~cancel_exception() override;

    std::unique_ptr<cloneable_exception> clone() const override;
    void raise() const override;
};

class HARBOR6_API digest_exception : public exception {
public:
    using exception::exception;
    ~digest_exception() override;

    std::unique_ptr<cloneable_exception> clone() const override;
    void raise() const override;
};

} // namespace basic

namespace nio {

class HARBOR6_API exception : public basic::exception {
public:
    using basic::exception::exception;
    ~exception() override;

    std::unique_ptr<basic::cloneable_exception> clone() const override;
    void raise() const override;
};

} // namespace nio
