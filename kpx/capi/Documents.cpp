#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "kpx/capi/internal/Answer.h"
#include "kpx/capi/Operations.h"

using namespace kpx;        // NOLINT(google-build-using-namespace): the functions are global
using namespace kpx::capi;  // NOLINT(google-build-using-namespace)

namespace {

/// More than any text of 2^31 units has in any encoding.
constexpr std::int64_t largestDocument = std::int64_t{1} << 34;

}  // namespace

int32_t kpx_c_new(const kpx_c_unit* rootName, int32_t rootNameLength, kpx_c_document** document) {
  return answer("kpx_c_new"_capi, [&] {
    if (document) *document = nullptr;
    const TextArgument root(rootName, rootNameLength);
    if (!document || !root.isValid) return failArgument();
    needTexts();
    auto made = std::make_unique<kpx_c_document>();
    if (!root.text.empty() && !made->document.addRoot(root.text)) {
      return fail(KPX_C_BAD_VALUE, u"the root's name is no name of an element");
    }
    *document = made.release();
    return KPX_C_OK;
  });
}

int32_t kpx_c_open(const kpx_c_unit* path, int32_t pathLength, kpx_c_document** document) {
  return answer("kpx_c_open"_capi, [&] {
    if (document) *document = nullptr;
    const TextArgument file(path, pathLength);
    if (!document || !file.isValid) return failArgument();
    needTexts();
    auto made = std::make_unique<kpx_c_document>();
    const DocumentResult result = made->document.load(file.text);
    if (!result.ok()) return fail(result, file.text);
    *document = made.release();
    return KPX_C_OK;
  });
}

int32_t kpx_c_open_bytes(const void* bytes, int64_t byteCount, kpx_c_document** document) {
  return answer("kpx_c_open_bytes"_capi, [&] {
    if (document) *document = nullptr;
    if (!document || byteCount < 0 || byteCount > largestDocument || (byteCount > 0 && !bytes)) {
      return failArgument();
    }
    needTexts();
    auto made = std::make_unique<kpx_c_document>();
    const DocumentResult result =
        made->document.read({static_cast<const char*>(bytes), static_cast<std::size_t>(byteCount)});
    if (!result.ok()) return fail(result, u"the document");
    *document = made.release();
    return KPX_C_OK;
  });
}

int32_t kpx_c_save(kpx_c_document* document, const kpx_c_unit* path, int32_t pathLength) {
  return answer("kpx_c_save"_capi, [&] {
    if (!isDocument(document)) return failDocument();
    const TextArgument file(path, pathLength);
    if (!file.isValid) return failArgument();
    const DocumentResult result = document->document.save(file.text);
    return result.ok() ? KPX_C_OK : fail(result, file.text);
  });
}

int32_t kpx_c_save_bytes(kpx_c_document* document, void* buffer, int64_t capacity,
                         int64_t* byteCount) {
  return answer("kpx_c_save_bytes"_capi, [&] {
    if (byteCount) *byteCount = 0;
    if (!isDocument(document)) return failDocument();
    if (!byteCount || capacity < 0 || (capacity > 0 && !buffer)) return failArgument();
    std::string bytes;
    const DocumentResult result = document->document.write(bytes);
    if (!result.ok()) return fail(result, u"the document");
    *byteCount = static_cast<int64_t>(bytes.size());
    if (capacity < *byteCount) return KPX_C_TRUNCATED;
    std::ranges::copy(bytes, static_cast<char*>(buffer));
    return KPX_C_OK;
  });
}

int32_t kpx_c_close(kpx_c_document* document) {
  return answer("kpx_c_close"_capi, [&] {
    if (!document) return KPX_C_OK;
    if (!isDocument(document)) return failDocument();
    // So that a second close is told apart, as long as nobody else was given the memory.
    *static_cast<volatile std::uint64_t*>(&document->marker) = 0;
    delete document;
    return KPX_C_OK;
  });
}
