#include "Commands.h"

#include <charconv>
#include <sstream>
#include <system_error>

namespace Tool {

namespace {

const char Footer[] = R"(Examples:
  appliance run                       a search for milk and a spoken choice, with all that takes
  appliance up                        start everything and keep it running, then elsewhere:
  appliance search --merchant greengrocer apple
  appliance search --retailer 우유
  appliance say "show me the second one"
  appliance log -f
  appliance monitor                   the messages between the apps as they pass

Exit status:
    0  done
    1  it ran, but what was asked failed: nothing was found, a sentence did not lead to what it
       should in time, a program broke, a reply said no
    2  wrong usage
    3  nothing runs there, or no app of that name, or not any more
    4  a search or a reply took longer than allowed
  130  interrupted
)";

}  // namespace

void buildCommandLine(CLI::App& app, Action& chosen)
{
    app.name("appliance");
    app.description("Runs the carvoy service on this PC with everything around it, and drives it by hand.");
    app.footer(Footer);
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);
    addUpCommand(app, chosen);
    addScreenCommand(app, chosen);
    addRunCommand(app, chosen);
    addSearchCommand(app, chosen);
    addResultCommand(app, chosen);
    addSayCommand(app, chosen);
    addStatusCommand(app, chosen);
    addLogCommand(app, chosen);
    addMonitorCommand(app, chosen);
    addSendCommand(app, chosen);
    addEnvCommand(app, chosen);
    addCompletionCommand(app, chosen);
}

void addRootOption(CLI::App& command, std::string& root)
{
    command
        .add_option("--root", root,
                    "The appliance's folder (else APPLIANCE_ROOT, else the build's or the user's own)")
        ->type_name("DIR");
}

CLI::Option* addTimeoutOption(CLI::App& command, std::chrono::milliseconds& limit, const std::string& what)
{
    const auto read = [&limit](const CLI::results_t& texts) {
        limit = limitOf(texts.back()).value_or(limit);
        return true;
    };
    const auto whyUnfit = [](const std::string& text) {
        return limitOf(text) ? "" : text + " is no number of seconds from 0.001 to 3600";
    };
    std::ostringstream fallback;
    fallback << std::chrono::duration<double>(limit).count();
    return command.add_option("--timeout", read, what)
        ->type_name("SECONDS")
        ->check(CLI::Validator(whyUnfit, ""))
        ->default_str(fallback.str());
}

CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& texts,
                      const std::string& what)
{
    const auto read = [&texts](const CLI::results_t& given) {
        texts = given;
        return true;
    };
    CLI::Option* option = command.add_option(name, read, what)->take_all();
    if (name.front() != '-') {
        // Words are taken for as long as some are lacking, and no policy asks for them in the end.
        const int manyWords = 1 << 20;
        option->expected(manyWords, CLI::detail::expected_max_vector_size);
    }
    return option;
}

CLI::Validator notEmpty()
{
    return CLI::Validator(
        [](const std::string& text) { return std::string(text.empty() ? "it is empty" : ""); }, "");
}

std::optional<std::chrono::milliseconds> limitOf(const std::string& seconds)
{
    const double longest = 3600;
    const double shortest = 0.001;
    double value = 0;
    const char* end = seconds.data() + seconds.size();
    const auto [next, error] = std::from_chars(seconds.data(), end, value);
    const bool isWithin = value >= shortest && value <= longest;  // what is no number is not
    if (error != std::errc() || next != end || !isWithin) {
        return std::nullopt;
    }
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(value));
}

}  // namespace Tool
