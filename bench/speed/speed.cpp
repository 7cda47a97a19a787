// kel_speed SCRIPT OUTPUT: runs the engine over a script, writes the sent lines to a file and
// prints the nanoseconds from the opened script to the written output, and the peak memory in
// bytes.

#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "bench/speed/peak_memory.h"
#include "script/engine/session.h"

namespace {

using namespace kel;

// Takes every line and knows no words.
class FileHost final : public script::Host {
public:
    explicit FileHost(const char* path) : file_(std::fopen(path, "wb")) {
        waiting_.reserve(2 * kBlock);
    }
    ~FileHost() override {
        if (file_) std::fclose(file_);
    }

    void echo(std::string_view text) override { std::fwrite(text.data(), 1, text.size(), stderr); }
    void endErrorReport() override {}
    bool send(std::string_view line) override {
        waiting_.append(line).push_back('\n');
        return waiting_.size() < kBlock || write();
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

    bool close() { return write() && std::fclose(std::exchange(file_, nullptr)) == 0; }

private:
    // Two calls of the library for each line, each with its lock, take a twelfth of the whole time.
    static constexpr std::size_t kBlock = 1 << 16;

    bool write() {
        const bool isWritten =
            file_ && std::fwrite(waiting_.data(), 1, waiting_.size(), file_) == waiting_.size();
        waiting_.clear();
        return isWritten;
    }

    std::FILE* file_;
    std::string waiting_;
};

struct Script {
    std::unique_ptr<char[]> bytes;
    std::size_t size;
    std::string_view text() const { return {bytes.get(), size}; }
};

Script read(const char* path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::size_t size = file ? static_cast<std::size_t>(file.tellg()) : 0;
    Script script{std::make_unique_for_overwrite<char[]>(size), size};
    file.seekg(0);
    file.read(script.bytes.get(), static_cast<std::streamsize>(size));
    if (!file) throw std::runtime_error("cannot read the script");
    return script;
}

void measure(const char* scriptPath, const char* outputPath) {
    const auto start = std::chrono::steady_clock::now();
    const Script source = read(scriptPath);
    FileHost host(outputPath);
    const script::TextRules rules;
    script::VariableStore variables(rules);
    script::Observer observer;
    script::Session session(host, variables, rules, observer);
    if (!session.run(source.text())) throw std::runtime_error("the script failed");
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
