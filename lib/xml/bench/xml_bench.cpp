// Reading and writing of a script of 5 MB, beside two well-known parsers where they are installed, and reading beside
// its floor: the same tree of the same strings, whose places in the text are known beforehand. Each reads from the same
// text and frees its document again. Only the work is alike, not the result: the others check more of the XML standard,
// resolve entities, and this one keeps line and column numbers.

#include "xml_parser.h"

#include <benchmark/benchmark.h>

#ifdef XML_BENCH_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef XML_BENCH_TINYXML2
#include <tinyxml2.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace
{

// As saved from the editor: entries with triggers and splines, some numbers short, some with 25 digits.
std::string makeScript()
{
    const std::size_t size = 5000000;
    std::string text = "<script>\n";
    char line[400];
    for (int i = 0; text.size() < size; ++i)
    {
        const double start = i * 0.5, odd = static_cast<double>(0.1f * static_cast<float>(i));
        std::snprintf(line, sizeof(line), "\t<effect name=\"effect%d\" start=\"%.25g\" end=\"%.25g\">\n", i % 40, start,
                      odd + start);
        text += line;
        for (int k = 0; k < 4; ++k)
        {
            std::snprintf(line, sizeof(line), "\t\t<trigger start=\"%.25g\" name=\"color\" value=\"%03d000255\"/>\n",
                          k * 1.25, i % 256);
            text += line;
        }
        std::snprintf(line, sizeof(line),
                      "\t\t<spline name=\"y\" type=\"smooth\" timescale=\"1\" timeoffset=\"0\" valuescale=\"1\" "
                      "valueoffset=\"%.25g\">\n",
                      odd);
        text += line;
        for (int k = 0; k < 4; ++k)
        {
            std::snprintf(line, sizeof(line), "\t\t\t<key time=\"%d\" value=\"%.25g\"/>\n", k, odd + k);
            text += line;
        }
        text += "\t\t</spline>\n\t</effect>\n";
    }
    return text + "</script>\n";
}

const std::string& script()
{
    static const std::string text = makeScript();
    return text;
}

void countBytes(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(script().size()));
}

void parseOurs(benchmark::State& state)
{
    for (auto _ : state)
    {
        Xml::XmlParser document;
        document.parse(script());
        benchmark::DoNotOptimize(document.getNumChildren());
    }
    countBytes(state);
}
BENCHMARK(parseOurs)->Unit(benchmark::kMillisecond);

// All that reading finds out: in document order the shape of each node and its strings, which lie in the text.
class Blueprint
{
public:
    explicit Blueprint(const Xml::XmlNode& root) { record(root, 0); }

    void build(Xml::XmlNode& root) const
    {
        std::size_t shape = 0, string = 0;
        build(root, shape, string);
    }

private:
    struct Shape
    {
        Xml::XmlTag::Type type;
        bool closed;
        std::size_t arguments, children;
    };

    // `from`: where the text goes on behind the parent's own strings.
    std::size_t record(const Xml::XmlNode& node, std::size_t from)
    {
        mShapes.push_back({node.mType, node.mClosed, node.mArguments.size(), node.mChildren.size()});
        from = find(node.mName, from);
        for (const Xml::XmlTag::Argument& argument : node.mArguments)
            from = find(argument.value, find(argument.name, from));
        for (const Xml::XmlNode* child : node.mChildren) from = record(*child, from);
        return from;
    }

    std::size_t find(const std::string& string, std::size_t from)
    {
        const std::size_t at = script().find(string, from);
        mStrings.push_back(std::string_view(script()).substr(at, string.size()));
        return at + string.size();
    }

    void build(Xml::XmlNode& node, std::size_t& shapeIndex, std::size_t& stringIndex) const
    {
        const Shape& shape = mShapes[shapeIndex++];
        node.mType = shape.type;
        node.mClosed = shape.closed;
        node.mName = mStrings[stringIndex++];
        node.mArguments.resize(shape.arguments);
        for (Xml::XmlTag::Argument& argument : node.mArguments)
        {
            argument.name = mStrings[stringIndex++];
            argument.value = mStrings[stringIndex++];
        }
        node.mChildren.reserve(shape.children);
        for (std::size_t i = 0; i < shape.children; ++i)
        {
            node.mChildren.push_back(new Xml::XmlNode(&node));
            build(*node.mChildren.back(), shapeIndex, stringIndex);
        }
    }

    std::vector<Shape> mShapes;
    std::vector<std::string_view> mStrings;
};

void parseFloor(benchmark::State& state)
{
    Xml::XmlParser document;
    document.parse(script());
    const Blueprint blueprint(document);
    document.clear();
    for (auto _ : state)
    {
        Xml::XmlParser copy;
        blueprint.build(copy);
        benchmark::DoNotOptimize(copy.getNumChildren());
    }
    countBytes(state);
}
BENCHMARK(parseFloor)->Unit(benchmark::kMillisecond);

void writeOurs(benchmark::State& state)
{
    Xml::XmlParser document;
    document.parse(script());
    for (auto _ : state)
    {
        std::string text;
        document.write(text, "\t");
        if (text != script()) state.SkipWithError("the document changed on its way");
    }
    countBytes(state);
}
BENCHMARK(writeOurs)->Unit(benchmark::kMillisecond);

#ifdef XML_BENCH_TINYXML2
void parseTinyxml2(benchmark::State& state)
{
    for (auto _ : state)
    {
        tinyxml2::XMLDocument document;
        if (document.Parse(script().data(), script().size()) != tinyxml2::XML_SUCCESS) state.SkipWithError("not read");
    }
    countBytes(state);
}
BENCHMARK(parseTinyxml2)->Unit(benchmark::kMillisecond);

void writeTinyxml2(benchmark::State& state)
{
    tinyxml2::XMLDocument document;
    document.Parse(script().data(), script().size());
    for (auto _ : state)
    {
        tinyxml2::XMLPrinter printer;
        document.Print(&printer);
        benchmark::DoNotOptimize(printer.CStr());
    }
    countBytes(state);
}
BENCHMARK(writeTinyxml2)->Unit(benchmark::kMillisecond);
#endif

#ifdef XML_BENCH_PUGIXML
struct StringWriter : pugi::xml_writer
{
    void write(const void* data, size_t size) override { text.append(static_cast<const char*>(data), size); }
    std::string text;
};

void parsePugixml(benchmark::State& state)
{
    for (auto _ : state)
    {
        pugi::xml_document document;
        if (!document.load_buffer(script().data(), script().size())) state.SkipWithError("not read");
    }
    countBytes(state);
}
BENCHMARK(parsePugixml)->Unit(benchmark::kMillisecond);

void writePugixml(benchmark::State& state)
{
    pugi::xml_document document;
    document.load_buffer(script().data(), script().size());
    for (auto _ : state)
    {
        StringWriter writer;
        document.save(writer, "\t");
        benchmark::DoNotOptimize(writer.text.data());
    }
    countBytes(state);
}
BENCHMARK(writePugixml)->Unit(benchmark::kMillisecond);
#endif

} // namespace

BENCHMARK_MAIN();
