#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <exception>

// The shape that the exceptions of all libraries share: a printf format and its arguments, formatted at once into an
// array inside the object, so that throwing and reporting never allocate. A text that does not fit is cut at the end.
template <std::size_t Capacity> class FormattedException : public std::exception
{
public:
    const char* what() const noexcept override { return argMsg; }

protected:
    FormattedException() { argMsg[0] = '\0'; }

    void format(const char* text, va_list arguments)
    {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        std::vsnprintf(argMsg, Capacity, text, arguments);
#pragma GCC diagnostic pop
    }

private:
    char argMsg[Capacity];
};

// Declares the exception class `Name` with room for `Capacity` bytes and the printf-style constructor.
#define GR_DECLARE_EXCEPTION(Name, Capacity)                                                                           \
    class Name : public FormattedException<Capacity>                                                                   \
    {                                                                                                                  \
    public:                                                                                                            \
        __attribute__((format(printf, 2, 3))) explicit Name(const char* text, ...)                                     \
        {                                                                                                              \
            va_list arguments;                                                                                         \
            va_start(arguments, text);                                                                                 \
            format(text, arguments);                                                                                   \
            va_end(arguments);                                                                                         \
        }                                                                                                              \
    }
