// SPDX-License-Identifier: MIT
// Parses the text of a script into blocks of statements.
#include "script/Program.h"

#include <utility>

#include "script/Commands.h"

namespace script {

namespace {

constexpr size_t kPrefixLength = 5;  // of every block's opening, "LOCAL", "BKIF0" and "BKIF1"
constexpr auto kNone = std::string_view::npos;

/// Parses a command and its operands into `statement`, which fails as long as something is missing.
void ParseCommand(std::string_view text, std::string_view open, Statement* statement) {
  const size_t space = text.find(' ');
  if (space == kNone) return;
  const Command* command = FindCommand(text.substr(0, space));
  if (!command) return;
  std::string_view arguments = Trimmed(text.substr(space));
  statement->command = command;
  if (command->extras.takesWords) statement->words = arguments;
  const size_t most = command->operands + (command->extras.hasOptional ? 1u : 0u);
  for (size_t i = 0; i < most; ++i, arguments = Trimmed(arguments)) {
    Operand* operand = &statement->operands[i];
    if (arguments.empty() && i < command->operands) return;
    if (arguments.empty())
      operand->number = command->extras.otherwise;
    else if (!ParseOperand(CutBefore(&arguments, ' '), operand, open))
      return;
  }
  statement->operandCount = static_cast<unsigned char>(most);
  statement->kind = command->extras.takesWords ? Statement::Kind::kWords : Statement::Kind::kCommand;
}

/// 'LOCALx', 'LOCALx=operand' or 'LOCALx=command'.
Statement ParseAssignment(std::string_view text, std::string_view open) {
  Statement statement;
  const int slot = ParseSlot(text.substr(kPrefixLength));
  if (slot < 0) return statement;
  statement.target = slot;
  const size_t equals = text.find('=');
  if (equals != kNone) text = Trimmed(text.substr(equals + 1));
  if (ParseOperand(text, &statement.operands[0], open))
    statement.kind = Statement::Kind::kCopy;
  else
    ParseCommand(text, open, &statement);
  return statement;
}

/// Adds the statements up to the first that fails: none behind it can run.
void AddStatements(std::string_view text, std::string_view open, Program* program) {
  while (!text.empty()) {
    const std::string_view piece = Trimmed(CutBefore(&text, ';'));
    if (piece.empty()) continue;
    program->statements.push_back(ParseStatement(piece, open));
    if (program->statements.back().kind == Statement::Kind::kFails) return;
  }
}

class ScriptParser {
 public:
  ScriptParser(std::string_view text, std::string_view open) : text_(text), open_(open) {
    for (Opening& opening : openings_) opening.position = text_.find(opening.word);
  }

  Program Parse() {
    while (cursor_ < text_.size() && !malformed_) ParseBlock();
    return std::move(program_);
  }

 private:
  struct Opening {
    std::string_view word;
    Block::Kind kind;
    size_t position = 0;  // of the first one at or behind the cursor
  };

  void ParseBlock() {
    for (Opening& opening : openings_)
      if (opening.position != kNone && opening.position < cursor_) opening.position = text_.find(opening.word, cursor_);
    for (const Opening& opening : openings_)
      if (opening.position == cursor_) return ParseBraces(opening.kind);
    // Contract: the first kind that occurs anywhere ends the run, even when another one stands earlier.
    for (const Opening& opening : openings_)
      if (opening.position != kNone) return AddBlock({}, opening.position, opening.position);
    AddBlock({}, text_.size(), text_.size());
  }

  void ParseBraces(Block::Kind kind) {
    cursor_ += kPrefixLength;
    Block block{.kind = kind};
    if (kind == Block::Kind::kWait) TakeOperand(&block.waitValue);
    if (kind != Block::Kind::kOnce) TakeOperand(&block.count);
    const size_t close = malformed_ ? kNone : text_.find('}', cursor_);
    if (close == kNone) return Fail();
    AddBlock(block, close, close + 1);
  }

  /// A word of the block's head; it ends at a space.
  void TakeOperand(Operand* operand) {
    SkipSpaces();
    const size_t space = malformed_ ? kNone : text_.find(' ', cursor_);
    if (space == kNone || !ParseOperand(text_.substr(cursor_, space - cursor_), operand)) {
      malformed_ = true;
      return;
    }
    cursor_ = space;
  }

  void AddBlock(Block block, size_t bodyEnd, size_t next) {
    block.first = program_.statements.size();
    AddStatements(text_.substr(cursor_, bodyEnd - cursor_), open_, &program_);
    block.end = program_.statements.size();
    program_.blocks.push_back(block);
    cursor_ = next;
    SkipSpaces();
  }

  void Fail() {
    malformed_ = true;
    program_.blocks.push_back({.kind = Block::Kind::kMalformed});
  }

  void SkipSpaces() {
    while (cursor_ < text_.size() && text_[cursor_] == ' ') ++cursor_;
  }

  std::string_view text_, open_;
  size_t cursor_ = 0;
  bool malformed_ = false;
  Opening openings_[3] = {{"CMDS{", Block::Kind::kOnce}, {"WAIT{", Block::Kind::kWait}, {"LOOP{", Block::Kind::kLoop}};
  Program program_;
};

}  // namespace

std::string_view Trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  return first == kNone ? std::string_view() : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::string_view CutBefore(std::string_view* text, char separator) {
  const size_t position = text->find(separator);
  const std::string_view cut = text->substr(0, position);
  text->remove_prefix(position == kNone ? text->size() : position + 1);
  return cut;
}

Statement ParseStatement(std::string_view text, std::string_view open) {
  if (text.starts_with("LOCAL")) return ParseAssignment(text, open);
  Statement statement;
  if (text == "RESULT") {
    statement.kind = Statement::Kind::kReport;
  } else if (text == "KQEXIT" || text == "LOGFILE") {
    statement.kind = Statement::Kind::kNothing;
  } else {
    statement.breakIfZero = text.starts_with("BKIF0");
    statement.breakIfNonzero = text.starts_with("BKIF1");
    const bool breaks = statement.breakIfZero || statement.breakIfNonzero;
    ParseCommand(breaks ? Trimmed(text.substr(kPrefixLength)) : text, open, &statement);
  }
  return statement;
}

Program ParseStatements(std::string_view text) {
  Program program;
  AddStatements(text, {}, &program);
  program.blocks.push_back({.end = program.statements.size()});
  return program;
}

Program ParseScript(std::string_view text, std::string_view open) { return ScriptParser(text, open).Parse(); }

}  // namespace script
