#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace Quorvane::TestSupport {

/// What is written to a stream while this object lives, kept away from the console.
///
///     const CapturedStream errors(std::cerr);
///     Call();
///     EXPECT_EQ(errors.Text(), "...");
class CapturedStream {
public:
    explicit CapturedStream(std::ostream& stream) : stream_(stream), buffer_(stream.rdbuf(text_.rdbuf())) {}
    ~CapturedStream() { stream_.rdbuf(buffer_); }
    CapturedStream(const CapturedStream&) = delete;
    CapturedStream& operator=(const CapturedStream&) = delete;

    std::string Text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::ostream& stream_;
    std::streambuf* buffer_;
};

}  // namespace Quorvane::TestSupport
