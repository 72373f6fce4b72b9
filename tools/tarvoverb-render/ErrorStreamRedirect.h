#pragma once

#include <iostream>

namespace tarvo::render
{
/// Sends `std::cerr` elsewhere while it lives. The library reports an exception on the error
/// stream as it builds it, with its source location; the tool gives the user the reason once,
/// in its own words, and keeps that report out of the way.
class ErrorStreamRedirect
{
public:
    explicit ErrorStreamRedirect(std::ostream& to) : previous(std::cerr.rdbuf(to.rdbuf())) {}
    ~ErrorStreamRedirect() { std::cerr.rdbuf(previous); }
    ErrorStreamRedirect(const ErrorStreamRedirect&) = delete;
    ErrorStreamRedirect& operator=(const ErrorStreamRedirect&) = delete;

private:
    std::streambuf* previous;
};
} // namespace tarvo::render
