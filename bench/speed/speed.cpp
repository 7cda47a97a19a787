// kel_speed SCRIPT OUTPUT: runs the engine over a script, writes the sent lines to a file and
// prints the nanoseconds from the opened script to the written output, and the peak memory in
// bytes.

#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "bench/speed/peak_memory.h"
#include "script/engine/session.h"

namespace {

using namespace kel;

// Takes every line and knows no words.
class FileHost final : public script::Host {
public:
    explicit FileHost(const char* path) : file_(path, std::ios::binary) {}

    void echo(std::string_view text) override { std::fwrite(text.data(), 1, text.size(), stderr); }
    void endErrorReport() override {}
    bool send(std::string_view line) override {
        file_ << line << '\n';
        return file_.good();
    }
    void yield() override {}
    bool cancelRequested() override { return false; }
    void clearCancelRequest() override {}
    std::optional<std::size_t> findDirective(std::string_view, std::size_t) override { return {}; }
    script::DirectiveOutcome callDirective(std::size_t, std::span<const std::string>) override {
        return {};
    }
    std::optional<std::size_t> findFunction(std::string_view, std::size_t) override { return {}; }
    script::FunctionOutcome callFunction(std::size_t, std::span<const std::string>) override {
        return {};
    }
    script::Answers ask(const script::Question&) override { return {}; }
    script::LocalTime localTime() override { return {}; }

    bool close() {
        file_.close();
        return file_.good();
    }

private:
    std::ofstream file_;
};

std::string read(const char* path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::string text(file ? static_cast<std::size_t>(file.tellg()) : 0, '\0');
    file.seekg(0);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file) throw std::runtime_error("cannot read the script");
    return text;
}

void measure(const char* scriptPath, const char* outputPath) {
    const auto start = std::chrono::steady_clock::now();
    const std::string text = read(scriptPath);
    FileHost host(outputPath);
    const script::TextRules rules;
    script::VariableStore variables(rules);
    script::Observer observer;
    script::Session session(host, variables, rules, observer);
    if (!session.run(text)) throw std::runtime_error("the script failed");
    if (!host.close()) throw std::runtime_error("the output was not written");
    const std::chrono::nanoseconds time = std::chrono::steady_clock::now() - start;
    std::printf("%.0f %.0f\n", static_cast<double>(time.count()),
                static_cast<double>(bench::peakMemory()));
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::fputs("usage: kel_speed SCRIPT OUTPUT\n", stderr);
        return 2;
    }
    try {
        measure(arguments[1], arguments[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kel_speed: %s\n", error.what());
        return 1;
    }
}
