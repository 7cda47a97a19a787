#include "html/html_stream.h"

namespace kel::html {
namespace {

bool isGiven(const char* text) {
    return text && *text;
}

std::string openingTag(std::string_view name, const char* className, const char* attributes) {
    std::string tag = "<";
    // The blank is always there, also when nothing follows.
    tag.append(name).append(" ");
    if (isGiven(className)) tag.append("class=").append(className);
    if (isGiven(attributes)) tag.append(" ").append(attributes);
    return tag += ">";
}

std::string closingTag(std::string_view name) {
    return std::string("</").append(name).append(">");
}

std::FILE* openText(const std::filesystem::path& path) {
#ifdef _WIN32
    return _wfopen(path.c_str(), L"w");
#else
    return std::fopen(path.c_str(), "w");
#endif
}

}  // namespace

bool HTMLStream::Open(const std::filesystem::path& path) {
    Close();
    file_.reset(openText(path));
    return file_ != nullptr;
}

void HTMLStream::BeginDocument(std::string_view title, const char* styleSheet) {
    WriteLine("<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.0 Transitional//EN\">");
    WriteLine("<HTML>");
    WriteLine("<HEAD>");
    WriteLine("<META NAME=\"GENERATOR\" Content=\"Kelvra(HTMLStream)\">");
    WriteLine(std::string("<TITLE>").append(title).append("</TITLE>"));
    if (isGiven(styleSheet))
        WriteLine(std::string("<link REL=stylesheet href=\"").append(styleSheet).append("\">"));
    WriteLine("</HEAD>");
}

void HTMLStream::OpenTag(std::string_view name, const char* className, const char* attributes) {
    if (!file_) return;
    WriteLine(openingTag(name, className, attributes));
    openElements_.emplace_back(name);
}

void HTMLStream::CloseTag() {
    if (openElements_.empty()) return;
    WriteLine(closingTag(openElements_.back()));
    openElements_.pop_back();
}

void HTMLStream::WriteElement(std::string_view name, const char* text, const char* className,
                              const char* attributes) {
    WriteLine(openingTag(name, className, attributes));
    if (text) WriteLine(text);
    WriteLine(closingTag(name));
}

void HTMLStream::WriteLine(std::string line) {
    if (!file_) return;
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), file_.get());
}

void HTMLStream::Close() {
    while (!openElements_.empty())
        CloseTag();
    file_.reset();
}

}  // namespace kel::html
