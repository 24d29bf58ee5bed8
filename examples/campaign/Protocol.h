#ifndef VOR_EXAMPLES_CAMPAIGN_PROTOCOL_H
#define VOR_EXAMPLES_CAMPAIGN_PROTOCOL_H

#include <string>
#include <vector>

#include "TestList.h"
#include "TestResult.h"

class VorListValVorString;

namespace campaign {

// A request is one text block: the expression, after the token and a line end where there is a
// token.  The answer is one block with a list of texts: name, return code and seconds of each test;
// it is empty if the expression selects none.  The output files follow in the same order.  To a
// request that is refused there is no answer: the server closes the connection.

/// The write buffer of both ends, in bytes; it bounds the answer.
constexpr int kSocketBuffer = 1 << 20;

/// Seconds after which a peer that neither sends nor takes anything within a transfer is given up.
constexpr int kStallLimit = 60;

/// What a server takes of a requester before it gives up: seconds to say what it wants, and bytes.
constexpr int kQuerySeconds = 10;
constexpr int kQueryBytes = 1 << 20;

/// Reads the token of a file, without line ends behind it; "" for no file.  Returns "" or one line
/// that says what is wrong.
std::string LoadToken(const std::string& path, std::string* token);

/// The text of a request.
std::string MakeQuery(const std::string& token, const std::string& expression);

/// Takes the expression out of a request; false if the request does not carry the token.  The time
/// this takes tells nothing about the token.
bool TakeExpression(const std::string& query, const std::string& token, std::string* expression);

/// True if the results of \a tests fit into an answer, whatever they are.
bool FitsAnswer(const std::vector<Test>& tests);

/// Results as the elements of the answer, and back.  ParseResults gives false if this is no answer
/// of a server, or one with names that cannot be file names or are there twice, or with a time that
/// none can have taken.
void ListResults(const std::vector<TestResult>& results, VorListValVorString* answer);
bool ParseResults(const VorListValVorString& answer, std::vector<TestResult>* results);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_PROTOCOL_H
