#include "platform/station/urdf/UrdfText.h"

#include "platform/common/Logger.h"
#include "platform/station/import/ImportFormats.h"

#include <console_bridge/console.h>
#include <tinyxml.h>
#include <urdf_parser/urdf_parser.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <string_view>

namespace vrk::station {
namespace {

constexpr int deepestNesting = 64; // elements; the XML reader calls itself for each level

/// The parser reports through one handler for the process.
std::mutex& parserMutex()
{
    static std::mutex mutex;
    return mutex;
}

/// Keeps the parser's messages off the console, and the first error for the failure's text.
class MessageKeeper : public console_bridge::OutputHandler {
public:
    MessageKeeper() : before(console_bridge::getOutputHandler()) { console_bridge::useOutputHandler(this); }
    ~MessageKeeper() override { console_bridge::useOutputHandler(before); }

    void log(const std::string& text, console_bridge::LogLevel level, const char*, int) override
    {
        if (level == console_bridge::CONSOLE_BRIDGE_LOG_ERROR && firstError.empty())
            firstError = text;
        FileLogger::inst()->trace(oneLine(text.c_str()));
    }

    std::string firstError;

private:
    console_bridge::OutputHandler* before;
};

/// The position behind the next `what`, or the end.
std::size_t behind(std::string_view text, std::string_view what, std::size_t from)
{
    const std::size_t found = text.find(what, from);
    return found == std::string_view::npos ? text.size() : found + what.size();
}

/// The position of the '>' of the tag that begins at `at`; those in quotes do not count.
std::size_t endOfTag(std::string_view text, std::size_t at)
{
    char quote = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (quote != 0)
            quote = c == quote ? '\0' : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '>')
            break;
    }
    return at;
}

bool isNestedTooDeeply(std::string_view text)
{
    int depth = 0;
    for (std::size_t at = text.find('<'); at < text.size(); at = text.find('<', at)) {
        const std::string_view rest = text.substr(at);
        if (rest.starts_with("<!--")) {
            at = behind(text, "-->", at);
        } else if (rest.starts_with("<![CDATA[")) {
            at = behind(text, "]]>", at);
        } else if (rest.starts_with("</")) {
            --depth;
            ++at;
        } else if (rest.starts_with("<?") || rest.starts_with("<!")) {
            ++at;
        } else {
            at = endOfTag(text, at);
            if (text[at - 1] != '/' && ++depth > deepestNesting)
                return true;
        }
    }
    return false;
}

std::string attributeOf(const TiXmlElement* element, const char* name)
{
    const char* const value = element ? element->Attribute(name) : nullptr;
    return value == nullptr ? std::string() : value;
}

/// The parser takes the last of two joints that carry one link, and keeps loops that the root does not reach.
void checkTree(const TiXmlElement& robot, const std::filesystem::path& file)
{
    std::map<std::string, std::string> parents;
    for (const TiXmlElement* joint = robot.FirstChildElement("joint"); joint;
         joint = joint->NextSiblingElement("joint")) {
        const std::string parent = attributeOf(joint->FirstChildElement("parent"), "link");
        const std::string child = attributeOf(joint->FirstChildElement("child"), "link");
        if (!parents.emplace(child, parent).second)
            throw ImportError(file, fmt::format("the link '{}' hangs on two joints", oneLine(child.c_str())));
        // Without this joint there is no loop, so the way up has an end.
        for (auto above = parents.find(child); above != parents.end(); above = parents.find(above->second)) {
            if (above->second == child)
                throw ImportError(
                    file, fmt::format("the joint '{}' closes a loop", oneLine(attributeOf(joint, "name").c_str())));
        }
    }
}

std::size_t countOf(const TiXmlElement& parent, const char* name)
{
    std::size_t count = 0;
    for (const TiXmlElement* child = parent.FirstChildElement(name); child; child = child->NextSiblingElement(name))
        ++count;
    return count;
}

/// Of a link with a shape that it cannot read the parser leaves out that and all that stands behind it.
void checkShapes(const TiXmlElement& robot, const urdf::ModelInterface& model, const std::string& cause,
                 const std::filesystem::path& file)
{
    for (const TiXmlElement* link = robot.FirstChildElement("link"); link; link = link->NextSiblingElement("link")) {
        const std::string name = attributeOf(link, "name");
        const urdf::LinkConstSharedPtr read = model.getLink(name);
        if (read && (read->visual_array.size() < countOf(*link, "visual") ||
                     read->collision_array.size() < countOf(*link, "collision")))
            throw ImportError(file, fmt::format("a shape of the link '{}' cannot be read: {}", oneLine(name.c_str()),
                                                oneLine(cause.c_str())));
    }
}

} // namespace

urdf::ModelInterfaceSharedPtr parseUrdfText(const std::string& text, const std::filesystem::path& file)
{
    if (text.find('\0') != std::string::npos || isNestedTooDeeply(text))
        throw ImportError(file, "not a robot description");
    TiXmlDocument document;
    document.Parse(text.c_str());
    if (document.Error())
        throw ImportError(file,
                          fmt::format("line {}: {}", std::max(1, document.ErrorRow()), oneLine(document.ErrorDesc())));
    const TiXmlElement* const robot = document.FirstChildElement("robot");
    if (robot == nullptr)
        throw ImportError(file, "not a robot description");
    checkTree(*robot, file);

    const std::lock_guard lock(parserMutex());
    MessageKeeper messages;
    urdf::ModelInterfaceSharedPtr model = urdf::parseURDF(text);
    if (!model || !model->getRoot())
        throw ImportError(file, fmt::format("not a robot description: {}", oneLine(messages.firstError.c_str())));
    checkShapes(*robot, *model, messages.firstError, file);
    return model;
}

} // namespace vrk::station
