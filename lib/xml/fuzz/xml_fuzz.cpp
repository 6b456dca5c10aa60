// Any bytes are read or refused by an XmlException; what was read is written, read and written again. Plain tags come
// out the same both ways.

#include "xml_parser.h"
#include "xml_testing.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    if (!plainTagsAgree(text)) std::abort();
    for (int round = 0; round < 2; ++round)
    {
        Xml::XmlParser document;
        document.mOnlyClosingTagEnds = round == 1;
        try
        {
            document.parse(text.data(), static_cast<int>(text.size()));
        }
        catch (const Xml::XmlException&)
        {
        }
        document.write(text, "\t");
    }
    return 0;
}
