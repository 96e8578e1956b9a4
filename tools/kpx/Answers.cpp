#include "tools/kpx/Answers.h"

namespace kpx::tool {

Json newAnswer() {
  constexpr int form = 1;
  return Json{{"form", form}};
}

Json answerAbout(const std::string& file) {
  Json answer = newAnswer();
  answer["file"] = nameOfInput(file);
  return answer;
}

std::string wordOf(std::u16string_view word) { return asUtf8(CString(word)); }

Json jsonOf(const ProblemLine& problem) {
  Json json{{"kind", problem.kind},
            {"line", problem.line},
            {"column", problem.column},
            {"message", onOneLine(problem.sentence)}};
  if (problem.isWarning) json["warning"] = true;
  return json;
}

Exit answerForEach(const std::vector<std::string>& files, Json& answer, const FileAnswer& body) {
  answer = newAnswer();
  Json list = Json::array();
  const Exit exit = forEachFile(files, [&](const std::string& file) {
    Json each{{"file", nameOfInput(file)}};
    try {
      const Exit answered = body(file, each);
      list.push_back(std::move(each));
      return answered;
    } catch (const Failure& failure) {
      each["error"] = onOneLine(failure.what());
      list.push_back(std::move(each));
      throw;
    }
  });
  answer["files"] = std::move(list);
  return exit;
}

}  // namespace kpx::tool
