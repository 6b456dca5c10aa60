// Any bytes are read or refused by an XmlException; what was read is written, read and written again.

#include "xml_parser.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
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
