#include "effecttable.h"

#include "document.h"
#include "effecttable_text.h"
#include "score.h"

#include <filesystem>
#include <system_error>

namespace Timeline
{

namespace
{

// A table that is wrong misleads, so every word in it counts.
class Reader
{
public:
    explicit Reader(const std::string& path) : mPath(path) {}

    [[noreturn]] void refuse(const Node& node, const std::string& trouble) const
    {
        throw Failure(mPath + ":" + std::to_string(node.line) + ": " + trouble);
    }

    const std::string& required(const Node& node, const char* attribute) const
    {
        const std::string& value = node.value(attribute);
        if (value.empty()) refuse(node, "<" + node.name + "> without '" + attribute + "'");
        return value;
    }

    bool yes(const Node& node, const char* attribute) const
    {
        const std::string& value = required(node, attribute);
        if (value != "yes" && value != "no") refuse(node, std::string("'") + attribute + "' is yes or no");
        return value == "yes";
    }

    ValueKind kind(const Node& node) const
    {
        const std::string& value = required(node, "kind");
        if (value == "number") return ValueKind::NUMBER;
        if (value == "integer") return ValueKind::INTEGER;
        if (value == "color") return ValueKind::COLOR;
        if (value == "word") return ValueKind::WORD;
        if (value == "none") return ValueKind::NONE;
        refuse(node, "unknown kind '" + value + "'");
    }

    Input input(const Node& node) const
    {
        Input input;
        input.name = required(node, "name");
        input.unit = node.value("unit");
        input.min = node.value("min");
        input.max = node.value("max");
        input.start = node.value("start");
        input.does = required(node, "does");
        if (node.name == "trigger")
        {
            input.kind = kind(node);
            input.kept = yes(node, "kept");
        }
        for (const std::unique_ptr<Node>& child : node.children)
            if (child->isTag("word")) input.words.push_back(child->value("value"));
        return input;
    }

private:
    const std::string& mPath;
};

const Input* findInput(const std::vector<Input>& inputs, const std::string& name)
{
    for (const Input& input : inputs)
        if (input.name == name || input.name == "*") return &input;
    return nullptr;
}

} // namespace

const Input* EffectClass::trigger(const std::string& trigger) const
{
    return findInput(triggers, trigger);
}

const Input* EffectClass::spline(const std::string& spline) const
{
    return findInput(splines, spline);
}

EffectTable::EffectTable(const std::string& text, const std::string& path)
{
    const Document document(text, false, path);
    const Reader reader(path);
    if (document.root().name != "effects") reader.refuse(document.root(), "the root is not <effects>");
    for (const std::unique_ptr<Node>& node : document.root().children)
    {
        if (!node->isTag("effect")) continue;
        EffectClass effect;
        effect.name = reader.required(*node, "class");
        effect.shows = reader.required(*node, "shows");
        effect.draws = reader.yes(*node, "draws");
        effect.clears = reader.yes(*node, "clears");
        effect.seek = reader.required(*node, "seek");
        for (const std::unique_ptr<Node>& part : node->children)
        {
            if (part->isTag("name"))
                mRegistered[reader.required(*part, "name")] = {mClasses.size(), part->value("reads")};
            if (part->isTag("file")) effect.files.push_back(reader.required(*part, "name"));
            if (part->isTag("trigger")) effect.triggers.push_back(reader.input(*part));
            if (part->isTag("spline")) effect.splines.push_back(reader.input(*part));
        }
        mClasses.push_back(effect);
    }
}

const EffectTable& EffectTable::builtIn()
{
    static const EffectTable table(EFFECT_TABLE_TEXT, "demo/effects.xml");
    return table;
}

EffectTable EffectTable::ofShow(const std::string& folder)
{
    const std::filesystem::path table = std::filesystem::path(folder) / "effects.xml";
    std::error_code trouble;
    if (!std::filesystem::is_regular_file(table, trouble)) return builtIn();
    return EffectTable(readFile(table.string()), table.string());
}

const EffectClass* EffectTable::find(const std::string& name) const
{
    const auto found = mRegistered.find(name);
    return found == mRegistered.end() ? nullptr : &mClasses[found->second.index];
}

std::string EffectTable::ownFile(const std::string& name) const
{
    const auto found = mRegistered.find(name);
    return found == mRegistered.end() ? "" : found->second.reads;
}

std::vector<std::string> EffectTable::names() const
{
    std::vector<std::string> names;
    for (const auto& registered : mRegistered) names.push_back(registered.first);
    return names;
}

} // namespace Timeline
