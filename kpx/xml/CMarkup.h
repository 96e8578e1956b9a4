#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "kpx/platform/FileOrigin.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/xml/AttributeReader.h"
#include "kpx/xml/ElemPos.h"
#include "kpx/xml/internal/AttributeMemory.h"
#include "kpx/xml/internal/ElementIndex.h"
#include "kpx/xml/MarkupNumber.h"
#include "kpx/xml/MarkupProblem.h"
#include "kpx/xml/MarkupText.h"

namespace kpx {

namespace detail {
struct TokenPos;
struct EditPlace;
class MarkupEditor;
// Wide text whose characters are no units.
KPX_API int findErrorLine(const wchar_t* text, int offset);
KPX_API int wideTo8(char* out, const wchar_t* in, int outBytes);
}  // namespace detail

/// Kinds of nodes as `GetNodeType` answers and `FindNode`, `AddNode` and `InsertNode` take them;
/// add them up to find several kinds at once.
namespace MarkupNode {
inline constexpr int element = 1;
inline constexpr int text = 2;
inline constexpr int whitespace = 4;
inline constexpr int cdataSection = 8;
inline constexpr int processingInstruction = 16;
inline constexpr int comment = 32;
inline constexpr int documentType = 64;
inline constexpr int loneEndTag = 128;
}  // namespace MarkupNode

/// Flags of a document and of single operations.
namespace MarkupFlag {
/// Document: tag names are compared without regard to case (default: with).
inline constexpr int ignoreCase = 8;
/// Data: keep references such as "&amp;" in the given text as they are.
inline constexpr int withReferences = 8;
/// Data: write a CDATA section instead of escaping.
inline constexpr int withCData = 16;
inline constexpr int dataFlags = withReferences | withCData;
/// Escaping: for an attribute value, quotes too.
inline constexpr int attributeValue = 0x100;
/// Saving: write the document although something of it gets lost.
inline constexpr int allowLoss = 0x200;
/// Saving: not over what another program has written since the document read or wrote the file.
inline constexpr int unlessChanged = 0x400;
/// Internal add: the library has written the markup itself, with right names and references.
inline constexpr int written = 0x1000;
/// Internal add: before the current element instead of after it.
inline constexpr int insertBefore = 0x2000;
/// Internal add: as a child of the main element instead of at its level.
inline constexpr int asChild = 0x4000;
}  // namespace MarkupFlag

/// An XML document: the whole text as one UTF-16 string, and beside it one 32-byte record for
/// each element. Names, attributes and data are never copied out while parsing; they are read
/// from the text on demand.
///
/// A document has a position that its operations work at:
///   - the *parent*, whose children are being walked (the document itself at first);
///   - the *main* element among them, the current one (none at first);
///   - the *child* element, the current one among the children of the main element. With no main
///     element at the document level, the root element is the child.
/// Operations without "Child" in their name work at the main element, the others at the child.
///
/// An object that writes itself adds an element, sets its attributes, and steps into it for what
/// it contains; an object that reads itself is at the child:
///
///     document.AddElem(u"Column");               |  document.GetChildTagName();   // "Column"
///     document.SetAttrib(u"Name", name);         |  document.GetChildAttrib(u"Name");
///     document.IntoElem();                       |  document.IntoElem();
///     document.AddElem(u"Value");                |  document.FindChildElem(u"Value");
///     document.OutOfElem();                      |  document.OutOfElem();
///
/// After OutOfElem both stand where they stood before IntoElem, so that the next object can be
/// added behind, or found as the next child.
///
/// A change touches nothing but what it is about: every other unit of the text stays. Each
/// element that is added stands on a line of its own, without indentation, with the line breaks
/// that the document has (CR LF where it has none); where its parent holds text that is not blank,
/// no line break is added, which would become part of that text. Changes near the end cost the same
/// however long the document is. What was ill-formed counts as such until the next parse, even when
/// a change has mended it.
///
/// What `MarkupCheck` would refuse no change brings in: names that are none of XML, "--" in
/// comments, a second document type, text outside of the root, and so on. Characters in values are
/// excepted: whatever they are, they are written and read back.
///
/// Operations that cannot be carried out answer false, 0 or the empty text and leave the document
/// as it was; unexpected failures, such as missing memory, are reported under the operation's
/// number besides. Only constructors and copies throw. Offsets count UTF-16 units from 0.
class CMarkup {
 public:
  // --- documents ----------------------------------------------------------------------------

  KPX_API CMarkup();
  /// An empty document with document flags, `MarkupFlag::ignoreCase` or 0.
  KPX_API explicit CMarkup(int flags);
  /// Parses the text.
  KPX_API explicit CMarkup(MCD_CSTR text);
  KPX_API CMarkup(const CMarkup& other);
  KPX_API CMarkup(CMarkup&& other) noexcept;
  KPX_API CMarkup& operator=(const CMarkup& other);
  KPX_API CMarkup& operator=(CMarkup&& other) noexcept;
  KPX_API ~CMarkup();

  /// Replaces the text, parses it and answers `IsWellFormed()`. An ill-formed document keeps all
  /// elements that could be made out, and can be walked. A text that is moved in is taken over
  /// without a copy.
  KPX_API bool SetDoc(const char16_t* text);
  bool SetDoc(std::nullptr_t) = delete;
  KPX_API bool SetDoc(const CString& text);
  KPX_API bool SetDoc(CString&& text);
  const CString& GetDoc() const noexcept { return doc_; }
  /// Moves the text out and leaves the document empty.
  KPX_API CString TakeDoc();

  /// Whether there is exactly one root element and no structural error was found.
  KPX_API bool IsWellFormed() const noexcept;
  /// The outcomes of the last parse, load or save as sentences, one a line: what was found wrong,
  /// and how a file was read or written. Empty after a parse that found nothing.
  KPX_API CString GetError() const;
  /// The outcomes of the last parse, load or save as small markup records, each an empty element
  /// named after the outcome, and the plain lines of structural errors.
  const CString& GetResult() const noexcept { return result_; }
  /// Called for every problem of the following parses; an empty function ends it.
  void SetProblemSink(MarkupProblemSink sink) { problemSink_ = std::move(sink); }
  /// Whether the following parses write what they find into the result text, as they do at first.
  /// That takes a line for each structural error, thus much memory for a hostile document; programs
  /// that have a problem sink can do without.
  void SetParseResult(bool isKept) noexcept { keepsResult_ = isKept; }

  /// How many line feeds there are from the start through `offset`: lines count from 0.
  KPX_API static int FindErrorLine(const char16_t* text, int offset);
  KPX_API static int FindErrorLine(std::u16string_view text, int offset);
  /// The offset counts UTF-16 units here too.
  template <class Wide>
  requires(std::is_same_v<Wide, wchar_t>) static int FindErrorLine(const Wide* text, int offset) {
    return detail::findErrorLine(text, offset);
  }

  int GetDocFlags() const noexcept { return docFlags_; }
  /// Takes `MarkupFlag::ignoreCase` or 0; holds for the following parses and searches.
  void SetDocFlags(int flags) noexcept { docFlags_ = flags; }
  /// How many elements the document has.
  KPX_API int GetDocElemCount() const noexcept;
  /// Bytes held by the text, with what it has in reserve, and by the index.
  KPX_API std::size_t GetMemoryBytes() const noexcept;

  // --- whole files ----------------------------------------------------------------------------

  /// Reads a file and parses it. The encoding is taken from a byte-order mark, else from the
  /// XML declaration, else it is UTF-8 where the bytes allow it and Windows-1252 where not.
  /// Answers false when the file could not be read (the document is then left as it was) or is
  /// not well formed; `GetResult` and `GetError` tell which. Bytes that are no text are read as
  /// U+FFFD, zeros are left out; the result counts them, and the document remembers them until it
  /// gets another text: see `Save`.
  KPX_API bool Load(const CString& path);
  /// Writes the document whole or not at all: a failure leaves an existing file as it was. The
  /// encoding is the one in the XML declaration, else the one the document was loaded with (which
  /// SetDoc forgets), else UTF-8. A byte-order mark is written where the loaded file had one, and
  /// where the document becomes UTF-16 only now. A document that was loaded and not changed gives
  /// the same bytes again, also where its declaration is wrong. Characters that the encoding does
  /// not have are written as references.
  ///
  /// Answers false and writes nothing when something would get lost: bytes that `Load` could not
  /// keep, or what the encoding cannot hold even so (a lone surrogate but in UTF-16, a unit 0, a
  /// character that it lacks in a name or comment). The result tells how many there are and where
  /// the first is: a byte of the loaded file, or a unit of the text. With `MarkupFlag::allowLoss`
  /// it is written, and the losses are counted.
  ///
  /// With `MarkupFlag::unlessChanged` the file that was loaded or saved last is not overwritten,
  /// and the answer is false, when another program has changed it since, or keeps its lock for ten
  /// seconds; without it the document overwrites whatever is there.
  KPX_API bool Save(const CString& path, int flags = 0);

  // --- the position ---------------------------------------------------------------------------

  /// Back to the document level, before the root element.
  KPX_API void ResetPos();
  /// Before the first element of the current parent.
  KPX_API void ResetMainPos();
  /// Before the first child of the main element.
  KPX_API void ResetChildPos();

  /// The next (previous) element after (before) the main one at this level, with this name if
  /// one is given; it becomes the main element. With no main element: the first (last) one.
  /// Answers false and stays where it is when there is none. From a node that is no element,
  /// the search goes on behind (before) it.
  KPX_API bool FindElem(MCD_CSTR name = {});
  KPX_API bool FindPrevElem(MCD_CSTR name = {});
  /// The same among the children of the main element. With no main element, the first element at
  /// this level becomes main first, except at the document level, where root elements are found.
  KPX_API bool FindChildElem(MCD_CSTR name = {});
  KPX_API bool FindPrevChildElem(MCD_CSTR name = {});

  /// Steps into the main element: it becomes the parent, the child becomes the main element.
  /// At the document level with no main element, steps into the document's child: the root (or
  /// the child found last) becomes the main element. Answers false when there is nothing.
  KPX_API bool IntoElem();
  /// Steps out: the parent becomes the main element again, the main element its child. Answers
  /// false at the document level with no main element; with one, the main element becomes the
  /// child of the document.
  KPX_API bool OutOfElem();

  /// Saves the position under a name, replacing an earlier one, and goes back to it. Removing the
  /// elements of a saved position removes it; a new parse removes all.
  KPX_API bool SavePos(MCD_CSTR name = {});
  KPX_API bool RestorePos(MCD_CSTR name = {});

  // --- reading at the main and the child element ------------------------------------------------

  KPX_API CString GetTagName() const;
  KPX_API CString GetChildTagName() const;
  /// The text inside the element or node with references resolved, CDATA sections included, up
  /// to the first child element; empty if there is none.
  KPX_API CString GetData() const;
  KPX_API CString GetChildData() const;
  /// The value of an attribute with references resolved; empty if there is none.
  KPX_API CString GetAttrib(MCD_CSTR name) const;
  KPX_API CString GetChildAttrib(MCD_CSTR name) const;
  KPX_API bool HasAttrib(MCD_CSTR name) const;
  KPX_API bool HasChildAttrib(MCD_CSTR name) const;
  /// The attribute at an index from 0, in written order; false past the last.
  KPX_API bool GetNthAttrib(int index, CString& name, CString& value) const;
  KPX_API bool GetNthChildAttrib(int index, CString& name, CString& value) const;
  /// The name as a part of the document's text, valid until it is changed. Takes no memory.
  KPX_API std::u16string_view ReadTagName() const noexcept;
  KPX_API std::u16string_view ReadChildTagName() const noexcept;
  /// Walks all attributes in one pass; valid until the document is changed. Use it to read more
  /// than a few attributes of one element, and where missing memory must not look like a missing
  /// attribute: values read this way throw.
  KPX_API AttributeReader ReadAttribs() const;
  KPX_API AttributeReader ReadChildAttribs() const;
  /// The markup of the element or node, tags included, as it stands in the document.
  KPX_API CString GetSubDoc() const;
  KPX_API CString GetChildSubDoc() const;
  /// The markup between the tags.
  KPX_API CString GetElemContent() const;
  /// Where the markup between the tags of the main element begins and ends.
  KPX_API bool GetContentOffsets(int& begin, int& end) const;
  /// Where the main element or node begins and ends (behind its last unit).
  KPX_API bool GetOffsets(int& begin, int& end) const;
  KPX_API bool GetChildOffsets(int& begin, int& end) const;
  /// Where the value of an attribute stands in the text, without its quotes.
  KPX_API bool GetAttribOffsets(MCD_CSTR name, int& begin, int& end) const;
  KPX_API bool GetChildAttribOffsets(MCD_CSTR name, int& begin, int& end) const;
  /// 0 for a root element, 1 for its children, and so on.
  KPX_API int GetElemLevel() const noexcept;
  /// The four bits 0x0f000000 are the caller's; GetElemFlags also shows 0x100000 (unended) and
  /// 0x200000 (a lone end tag or an unended child inside).
  KPX_API int GetElemFlags() const noexcept;
  KPX_API bool SetElemFlags(int flags) noexcept;

  // --- changing the main and the child element ---------------------------------------------------

  // Values are texts or numbers: integers whole, `bool` as 1 and 0, reals as `utlDoubleAsText`
  // writes them, with all digits (allDigits) or so many decimals.

  /// Names must be names of XML; others are refused.
  KPX_API bool SetTagName(MCD_CSTR name);
  KPX_API bool SetChildTagName(MCD_CSTR name);
  /// Replaces the content of an element that has no child elements, or the text of a node, which
  /// must remain one node of its kind (text may become blank, or a CDATA section).
  /// Flags: `withReferences`, `withCData`.
  KPX_API bool SetData(MCD_CSTR data, int flags = 0);
  template <MarkupInteger Integer>
  bool SetData(Integer value) {
    return SetData(detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool SetData(Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && SetData(text);
  }
  KPX_API bool SetChildData(MCD_CSTR data, int flags = 0);
  template <MarkupInteger Integer>
  bool SetChildData(Integer value) {
    return SetChildData(detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool SetChildData(Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && SetChildData(text);
  }
  /// Sets or adds an attribute; a new one goes behind the others, the value of one that is there
  /// keeps its kind of quotes. The value is escaped.
  KPX_API bool SetAttrib(MCD_CSTR name, MCD_CSTR value);
  template <MarkupInteger Integer>
  bool SetAttrib(MCD_CSTR name, Integer value) {
    return SetAttrib(name, detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool SetAttrib(MCD_CSTR name, Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && SetAttrib(name, text);
  }
  KPX_API bool SetChildAttrib(MCD_CSTR name, MCD_CSTR value);
  template <MarkupInteger Integer>
  bool SetChildAttrib(MCD_CSTR name, Integer value) {
    return SetChildAttrib(name, detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool SetChildAttrib(MCD_CSTR name, Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && SetChildAttrib(name, text);
  }
  /// Removes the first attribute of this name; false when there is none.
  KPX_API bool RemoveAttrib(MCD_CSTR name);
  KPX_API bool RemoveChildAttrib(MCD_CSTR name);

  // --- adding and removing elements --------------------------------------------------------------

  /// Adds an element after the main one (with no main element: as the last of all at this level),
  /// or inserts it before (as the first element); it becomes the main element. Name and data as for
  /// SetTagName and SetData.
  KPX_API bool AddElem(MCD_CSTR name, MCD_CSTR data = {}, int flags = 0);
  template <MarkupInteger Integer>
  bool AddElem(MCD_CSTR name, Integer value) {
    return AddElem(name, detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool AddElem(MCD_CSTR name, Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && AddElem(name, text);
  }
  KPX_API bool InsertElem(MCD_CSTR name, MCD_CSTR data = {}, int flags = 0);
  template <MarkupInteger Integer>
  bool InsertElem(MCD_CSTR name, Integer value) {
    return InsertElem(name, detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool InsertElem(MCD_CSTR name, Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && InsertElem(name, text);
  }
  /// The same among the children of the main element; the new element becomes the child.
  KPX_API bool AddChildElem(MCD_CSTR name, MCD_CSTR data = {}, int flags = 0);
  template <MarkupInteger Integer>
  bool AddChildElem(MCD_CSTR name, Integer value) {
    return AddChildElem(name, detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool AddChildElem(MCD_CSTR name, Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && AddChildElem(name, text);
  }
  KPX_API bool InsertChildElem(MCD_CSTR name, MCD_CSTR data = {}, int flags = 0);
  template <MarkupInteger Integer>
  bool InsertChildElem(MCD_CSTR name, Integer value) {
    return InsertChildElem(name, detail::IntegerText(value));
  }
  template <MarkupReal Real>
  bool InsertChildElem(MCD_CSTR name, Real value, int decimals = allDigits) {
    const detail::RealText text(value, decimals);
    return !text.isEmpty() && InsertChildElem(name, text);
  }
  /// Adds the root element of a well-formed piece of markup that `MarkupCheck` passes, placed
  /// likewise; a declaration or comment around it is left out.
  KPX_API bool AddSubDoc(MCD_CSTR markup);
  KPX_API bool InsertSubDoc(MCD_CSTR markup);
  KPX_API bool AddChildSubDoc(MCD_CSTR markup);
  KPX_API bool InsertChildSubDoc(MCD_CSTR markup);
  /// Removes the element with everything in it, and its line when it stands on one alone. The
  /// element before it becomes the current one, so that a following FindElem goes on behind the
  /// removed one.
  KPX_API bool RemoveElem();
  KPX_API bool RemoveChildElem();

  // --- nodes: elements and what stands between them ----------------------------------------------

  /// The next node of one of the given kinds (0: any) at this level. An element becomes the main
  /// element; any other node is read with GetData and changed with SetData. Answers its kind, or
  /// 0 and stays where it is when there is none.
  KPX_API int FindNode(int types = 0);
  int GetNodeType() const noexcept { return nodeType_; }
  /// Adds a node behind the current one (inserts it before), with the text that GetData gives
  /// back: of an element its name, of a document type its whole markup, else what stands between
  /// the delimiters. Refuses lone end tags, and a text that would not read back as one node of
  /// this kind. Text that is put beside text joins it; the whole is then the current node.
  KPX_API bool AddNode(int type, MCD_CSTR text);
  KPX_API bool InsertNode(int type, MCD_CSTR text);
  /// Removes the current node. The node before it becomes the current one; for an element, see
  /// RemoveElem. Refused for a document type that declares entities which are used.
  KPX_API bool RemoveNode();

  // --- text for markup, static and without state --------------------------------

  KPX_API static int DecodeCharUTF8(const char*& position, const char* end);
  KPX_API static void EncodeCharUTF8(int codePoint, char* out, int& count);
  KPX_API static int DecodeCharUTF16(const char16_t*& position, const char16_t* end);
  KPX_API static void EncodeCharUTF16(int codePoint, char16_t* out, int& count);
  KPX_API static int UTF8To16(char16_t* out, const char* in, int inBytes);
  KPX_API static int UTF16To8(char* out, const char16_t* in, int outBytes);
  // The same on wide text: where its characters are units; what is only read, everywhere.
  template <class Wide>
  requires(std::is_same_v<Wide, wchar_t>&& wideIsUtf16) static int DecodeCharUTF16(
      const Wide*& position, std::type_identity_t<const Wide*> end) {
    auto* units = reinterpret_cast<const char16_t*>(position);
    const int codePoint = DecodeCharUTF16(units, reinterpret_cast<const char16_t*>(end));
    position = reinterpret_cast<const Wide*>(units);
    return codePoint;
  }
  template <class Wide>
  requires(std::is_same_v<Wide, wchar_t>&& wideIsUtf16) static void EncodeCharUTF16(int codePoint,
                                                                                    Wide* out,
                                                                                    int& count) {
    EncodeCharUTF16(codePoint, reinterpret_cast<char16_t*>(out), count);
  }
  template <class Wide>
  requires(std::is_same_v<Wide, wchar_t>&& wideIsUtf16) static int UTF8To16(Wide* out,
                                                                            const char* in,
                                                                            int inBytes) {
    return UTF8To16(reinterpret_cast<char16_t*>(out), in, inBytes);
  }
  template <class Wide>
  requires(std::is_same_v<Wide, wchar_t>) static int UTF16To8(char* out, const Wide* in,
                                                              int outBytes) {
    if constexpr (wideIsUtf16) {
      return UTF16To8(out, reinterpret_cast<const char16_t*>(in), outBytes);
    } else {
      return detail::wideTo8(out, in, outBytes);
    }
  }
  KPX_API static bool DetectUTF8(const char* in, int bytes, int* nonAscii = nullptr,
                                 bool* cutShort = nullptr);
  KPX_API static CString EscapeText(MCD_CSTR text, int flags = 0);
  KPX_API static CString UnescapeText(MCD_CSTR text);
  /// The text as a CDATA section; each "]]>" in it is divided between two sections.
  KPX_API static CString x_EncodeCDATASection(MCD_CSTR text);
  KPX_API static CString EncodeBase64(const unsigned char* data, int bytes);
  KPX_API static int DecodeBase64(const CString& text, unsigned char* out, int outBytes);
  KPX_API static int GetEncodingCodePage(MCD_CSTR encodingName);
  KPX_API static CString GetDeclaredEncoding(MCD_CSTR document);

 private:
  friend class detail::MarkupEditor;
  friend class MarkupValidator;
  friend class WrittenMarkup;

  // Offsets of a node that is no element.
  struct NodePos {
    int type = 0;
    int offset = 0;
    int length = 0;
    int previousElem = 0;  // the last element before it at its level
  };
  struct SavedPos {
    int parent = 0;
    int main = 0;
    int child = 0;
    NodePos node;
  };
  // How the file that the text was loaded from is stored; code page 0 if it was not loaded.
  struct LoadedEncoding {
    int codePage = 0;
    bool mark = false;
    CString declared;  // the encoding's name in its XML declaration
    // Bytes that were not read, and those that this encoding would write otherwise; of each the
    // offset of the first.
    std::size_t unread = 0;
    std::size_t firstUnread = 0;
    std::size_t respelled = 0;
    std::size_t firstRespelled = 0;
  };

  void x_InitMarkup();
  void x_CopyPlace(const CMarkup& other) noexcept;
  bool x_ParseDoc();
  int x_ParseElem(int parent, detail::TokenPos& token);
  void x_SetPos(int parent, int main, int child) noexcept;
  void x_AddResult(std::u16string_view record);

  // Which element an operation works at, and below which one; 0 (for parents -1) if there is none.
  int x_ChildElem() const noexcept;
  int x_ChildParent() const noexcept;
  int x_FindElem(int parent, int from, std::u16string_view name, bool forward) const noexcept;
  int x_ElemBefore(int element) const noexcept;
  std::u16string_view x_Text(int begin, int end) const noexcept;
  std::u16string_view x_StartTag(int element) const noexcept;
  CString x_ElemData(int element) const;
  CString x_NodeData() const;
  bool x_NthAttrib(int element, int index, CString& name, CString& value) const;
  bool x_AttribOffsets(int element, std::u16string_view name, int& begin, int& end) const noexcept;
  void x_SetNode(const NodePos& node) noexcept;

  bool x_AddElem(std::u16string_view name, std::u16string_view data, int flags);
  bool x_AddSubDoc(std::u16string_view markup, int flags);
  bool x_PlaceFor(int flags, detail::EditPlace& place) noexcept;
  bool x_SetAdded(int element, int flags) noexcept;

  CString doc_;
  CString result_;
  int parentPos_ = 0;
  int mainPos_ = 0;
  int childPos_ = 0;
  int nodeType_ = 0;
  int nodeOffset_ = 0;
  int nodeLength_ = 0;
  int nodePreviousElem_ = 0;
  int docFlags_ = 0;
  std::map<std::u16string, SavedPos, std::less<>> savedPositions_;
  detail::ElementIndex index_;
  detail::AttributeMemory attributeMemory_;
  std::u16string_view lineEnd_;  // the first of the document; empty: not looked for yet
  MarkupProblemSink problemSink_;
  bool keepsResult_ = true;
  LoadedEncoding loaded_;
  FileOrigin origin_;
};

}  // namespace kpx
