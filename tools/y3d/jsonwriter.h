#pragma once

#include <string>
#include <vector>

// Prints one JSON value to the standard output, indented. Inside an object each value follows its key.
//
//     json.openObject();
//     json.key("vertices").value(3);
//     json.closeObject();
class JsonWriter
{
public:
    void openObject() { open('{'); }
    void closeObject() { close('}'); }
    void openArray() { open('['); }
    void closeArray() { close(']'); }

    JsonWriter& key(const std::string& name);

    void value(const std::string& text); // bytes that are not UTF-8 become the characters of the same numbers
    void value(const char* text) { value(std::string(text)); }
    void value(float number); // null when it is no finite number
    void value(bool truth) { print(truth ? "true" : "false"); }
    void value(int number) { print(std::to_string(number)); }
    void value(std::size_t number) { print(std::to_string(number)); }
    void values(const std::vector<float>& numbers); // an array on one line
    void null() { print("null"); }

private:
    void open(char bracket);
    void close(char bracket);
    void print(const std::string& text); // a whole value, in its place
    void separate();

    std::vector<bool> mHasItems; // for each open object or array
    bool mAfterKey = false;
};
