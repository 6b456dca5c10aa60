#pragma once

#include <string>
#include <string_view>

namespace Xml
{

// The parser's source of characters, and the keeper of the position that error texts report. A tab adds 4 to the
// column, a newline adds 1 to the line and sets the column to 1, any other byte adds 1 to the column. Failures are
// XmlException without a position; XmlParser::parse puts the position in front.
struct BufferReader
{
    BufferReader(const char* data, unsigned int length) : mData(data), mLength(length) {}

    // Skips `count` bytes; a carriage return adds nothing to the column here. Throws "EOF", and skips nothing, when
    // fewer are left.
    void skipChar(int count);

    // The next byte; a carriage return counts as a column. Throws "EOF" at the end.
    char readChar()
    {
        const char c = peek();
        if (c > '\r')
            skipPlain(1);
        else
            skipControl(c);
        return c;
    }

    // Everything up to a byte of `stops` or the end of the buffer; the stop byte stays unread. A tab comes back as four
    // spaces, a carriage return is left out.
    std::string readText(const std::string& stops);

    // As readText, but a newline stops the reading as well.
    std::string readLine(const std::string& stops);

    // Letters, digits and bytes of `extra`, up to the first other byte or the end of the buffer. May come back empty.
    std::string readWord(const std::string& extra);

    // As readLine and readWord, for those who keep the text elsewhere. The word is a part of the buffer.
    void readLineInto(std::string& text, char stop);
    std::string_view readWordView(std::string_view extra);

    // Skips spaces, tabs, carriage returns and newlines. Throws when fewer than `minimum` spaces and tabs were among
    // them.
    void skipWhitespace(int minimum);

    bool isAtEnd() const { return mPos >= mLength; }

    // The byte `ahead` of the read position, without moving. Throws "EOF" past the end.
    char peek(unsigned int ahead = 0) const
    {
        if (ahead >= mLength - mPos) throwEof();
        return mData[mPos + ahead];
    }

    // The next byte is there and is `c`.
    bool isNext(char c) const { return mPos < mLength && mData[mPos] == c; }

    // Skips `count` bytes that were looked at before and are neither tabs, newlines nor carriage returns.
    void skipPlain(unsigned int count)
    {
        mPos += count;
        addColumns(count);
    }

    const char* mData;     // not owned, not null-terminated
    unsigned int mLength;  // bytes
    unsigned int mPos = 0; // of the next byte
    int mLine = 1;
    int mTagLine = -1; // where the reading of the current tag began, -1 before the first
    int mColumn = 1;
    int mTagColumn = -1;

private:
    // Wraps around instead of overflowing: a line of gigabytes of tabs is no reason to stop.
    void addColumns(unsigned int count) { mColumn = static_cast<int>(static_cast<unsigned int>(mColumn) + count); }

    [[noreturn]] static void throwEof();
    void skipControl(char c);
    template <class IsStop> void readUntil(std::string& text, IsStop isStop, bool newlineStops);
};

} // namespace Xml
