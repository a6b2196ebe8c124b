#ifndef VYKELDEV_COMMANDS_UNKNOWNCOMMAND_H
#define VYKELDEV_COMMANDS_UNKNOWNCOMMAND_H

namespace CLI {
class App;
}

namespace vykeldev {

/// After a parse that failed: when the user gave a command that does not exist, reports it to standard error,
/// with the command that looks most like it. False when that was not the mistake.
bool explainUnknownCommand(const CLI::App& app);

/// The same for several arguments that no command takes, in the order in which the user gave them: the
/// parser's own message turns it round.
bool explainUnexpectedWords(const CLI::App& app);

} // namespace vykeldev

#endif
