#ifndef VOR_EXAMPLES_CAMPAIGN_PROTOCOL_H
#define VOR_EXAMPLES_CAMPAIGN_PROTOCOL_H

#include <string>
#include <vector>

#include "TestList.h"
#include "TestResult.h"

class TASocket;
class VorListValVorString;

namespace campaign {

// A request is one text block: the token and a newline, if there is a token, and the expression.
// The answer is one block with a list of four texts for each test: name, outcome, return code and
// seconds; it is empty if the expression selects none.  An outcome is written as its words joined
// by hyphens.  The output files follow in the same order, an empty one if the log could not be
// written.  A refused request gets no answer: the server closes the connection.

/// The write buffer of both ends, in bytes.  It limits the size of an answer.
constexpr int kSocketBuffer = 1 << 20;

/// Seconds without a byte in either direction after which a transfer is given up.
constexpr int kStallLimit = 60;

/// Limits of the request itself: seconds until it must have arrived, and its bytes.
constexpr int kQuerySeconds = 10;
constexpr int kQueryBytes = 1 << 20;

/// Why the last operation of \a socket failed, with the reason of the system if there is one.
std::string Reason(const TASocket& socket);

/// Reads the token of a file, without the newlines at its end.  An empty path means no token.
/// Returns "" or one line that says what is wrong.
std::string LoadToken(const std::string& path, std::string* token);

/// The text of a request.
std::string MakeQuery(const std::string& token, const std::string& expression);

/// Extracts the expression from a request.  Returns false if the request does not contain the
/// token.  The running time reveals nothing about the token.
bool TakeExpression(const std::string& query, const std::string& token, std::string* expression);

/// True if the results of \a tests fit into an answer, whatever their outcome.
bool FitsAnswer(const std::vector<Test>& tests);

/// Results as the elements of the answer, and back.  ParseResults returns false if an honest server
/// cannot have sent \a answer: a name is unsafe or repeated, an outcome unknown, a number
/// malformed, a time impossible, or the return code contradicts the outcome.
void ListResults(const std::vector<TestResult>& results, VorListValVorString* answer);
bool ParseResults(const VorListValVorString& answer, std::vector<TestResult>* results);

}  // namespace campaign

#endif  // VOR_EXAMPLES_CAMPAIGN_PROTOCOL_H
