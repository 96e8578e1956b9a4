/* The C interface as a host uses it: compiled as C, linked to the shared library. */

#include <math.h>
#include <stdio.h>
#include <string.h>

#include "kpx_c.h"

static int failures = 0;

#define CHECK(condition)                                              \
  do {                                                                \
    if (!(condition)) {                                               \
      ++failures;                                                     \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
    }                                                                 \
  } while (0)

/* Like CHECK for a call, and tells the code that came instead. */
#define ANSWERS(expected, call)                                                         \
  do {                                                                                  \
    const int32_t code_ = (call);                                                       \
    if (code_ != (expected)) {                                                          \
      ++failures;                                                                       \
      fprintf(stderr, "%s:%d: %s answers %d\n", __FILE__, __LINE__, #call, (int)code_); \
    }                                                                                   \
  } while (0)

enum { bufferSize = 200, bytesSize = 400000 };
typedef struct {
  kpx_c_unit units[bufferSize];
  int32_t length;
} Text;

static int32_t lengthOf(const kpx_c_unit* text) {
  int32_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

static int isSame(const kpx_c_unit* text, int32_t length, const kpx_c_unit* expected) {
  return length == lengthOf(expected) && memcmp(text, expected, (size_t)length * sizeof *text) == 0;
}

static int is(const Text* text, const kpx_c_unit* expected) {
  return isSame(text->units, text->length, expected);
}

static Text textAt(const kpx_c_document* document, int32_t configuration, const kpx_c_unit* key) {
  Text text;
  ANSWERS(KPX_C_OK,
          kpx_c_get_text(document, configuration, key, -1, text.units, bufferSize, &text.length));
  return text;
}

static int contains(const char* bytes, const char* part) { return strstr(bytes, part) != NULL; }

static kpx_c_document* opened(const char* xml) {
  kpx_c_document* document = NULL;
  ANSWERS(KPX_C_OK, kpx_c_open_bytes(xml, (int64_t)strlen(xml), &document));
  return document;
}

/* The bytes of a document, with a 0 behind them. */
static const char* bytesOf(kpx_c_document* document) {
  static char bytes[bytesSize];
  int64_t count = 0;
  ANSWERS(KPX_C_OK, kpx_c_save_bytes(document, bytes, sizeof bytes - 1, &count));
  bytes[count] = 0;
  return bytes;
}

/* Two configurations of one class, with what the library does not know around them: a comment,
 * an element, an attribute and a column of another program. */
static const char twoHeaders[] =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
    "<Projekt x='\xe4'><!-- c -->\n"
    "<CFGConfigCFGClassHeader Name='A' own='1'><CFGClass>\n"
    "  <CFGCol Name='Class'><CFGValue Value='a'/></CFGCol>\n"
    "  <CFGCol Name='Foreign'><CFGValue Value='7'/></CFGCol>\n"
    "</CFGClass></CFGConfigCFGClassHeader>\n"
    "<CFGConfigX><CFGClass/></CFGConfigX><other/>\n"
    "<CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'><CFGValue Value='b'/></CFGCol>"
    "</CFGClass></CFGConfigCFGClassHeader></Projekt>\n";

static const kpx_c_unit general[] = u"CFGGeneralSettings";
static const kpx_c_unit header[] = u"CFGHeader";
static const kpx_c_unit tolerance[] = u"CA2T_Tol_XY";

static void newDocumentGoesThroughAFile(void) {
  const kpx_c_unit path[] = u"Gr\u00f6\u00dfe \u20ac \U0001d11e.xml";
  kpx_c_document* document = NULL;
  int32_t first = -1, second = -1, number = -1, stored = -1;
  double value = 0;
  Text text;
  ANSWERS(KPX_C_OK, kpx_c_new(u"Projekt", -1, &document));
  ANSWERS(KPX_C_OK, kpx_c_add(document, general, -1, &first));
  ANSWERS(KPX_C_OK, kpx_c_add(document, general, lengthOf(general), &second));
  CHECK(first == 0 && second == 1);
  ANSWERS(KPX_C_OK, kpx_c_get_double(document, second, tolerance, -1, &value));
  CHECK(value == 0.02);
  /* The decimals of the setting are those of its setter. */
  ANSWERS(KPX_C_OK, kpx_c_set_double(document, second, tolerance, -1, 0.03549));
  text = textAt(document, second, tolerance);
  CHECK(is(&text, u"0.035"));
  ANSWERS(KPX_C_OK, kpx_c_save(document, path, -1));
  ANSWERS(KPX_C_OK, kpx_c_close(document));

  ANSWERS(KPX_C_OK, kpx_c_open(path, lengthOf(path), &document));
  ANSWERS(KPX_C_OK, kpx_c_count(document, &number));
  CHECK(number == 2);
  ANSWERS(KPX_C_OK, kpx_c_find(document, general, -1, 1, &number));
  CHECK(number == 1);
  ANSWERS(KPX_C_OK, kpx_c_get_double(document, 1, tolerance, -1, &value));
  CHECK(value == 0.035);
  ANSWERS(KPX_C_OK, kpx_c_get_double(document, 0, tolerance, -1, &value));
  CHECK(value == 0.02);
  ANSWERS(KPX_C_OK, kpx_c_is_stored(document, 0, tolerance, -1, &stored));
  CHECK(stored == 1);

  /* What cannot be written leaves the file as it was. */
  {
    kpx_c_document* empty = NULL;
    kpx_c_unit below[bufferSize];
    ANSWERS(KPX_C_OK, kpx_c_new(NULL, 0, &empty));
    ANSWERS(KPX_C_REFUSED, kpx_c_save(empty, path, -1));
    memcpy(below, path, sizeof path);
    memcpy(below + lengthOf(path), u"/x", sizeof u"/x");
    ANSWERS(KPX_C_NOT_WRITTEN, kpx_c_save(document, below, -1));
    ANSWERS(KPX_C_OK, kpx_c_close(empty));
    ANSWERS(KPX_C_OK, kpx_c_open(path, -1, &empty));
    ANSWERS(KPX_C_OK, kpx_c_close(empty));
  }
  ANSWERS(KPX_C_OK, kpx_c_close(document));
}

static void nothingElseInTheDocumentChanges(void) {
  kpx_c_document* document = opened(twoHeaders);
  int32_t number = -1, stored = -1;
  const kpx_c_unit* name = NULL;
  int32_t length = 0;
  const char* bytes = bytesOf(document);
  CHECK(strcmp(bytes, twoHeaders) == 0);

  ANSWERS(KPX_C_OK, kpx_c_count(document, &number));
  CHECK(number == 3);
  ANSWERS(KPX_C_UNKNOWN_CLASS, kpx_c_configuration_class(document, 1, &name, &length));
  ANSWERS(KPX_C_OK, kpx_c_configuration_class(document, 2, &name, &length));
  CHECK(isSame(name, length, header) && name[length] == 0);
  ANSWERS(KPX_C_OK, kpx_c_find(document, header, -1, 1, &number));
  CHECK(number == 2);

  /* A character that the encoding lacks becomes a reference, and comes back as it was set. */
  ANSWERS(KPX_C_OK, kpx_c_set_text(document, 2, u"Class", -1, u"\u03a9 \"<\u00e4", -1));
  ANSWERS(KPX_C_OK, kpx_c_is_stored(document, 0, u"Description", -1, &stored));
  CHECK(stored == 0);
  ANSWERS(KPX_C_OK, kpx_c_set_text(document, 0, u"Description", -1, NULL, 0));
  bytes = bytesOf(document);
  CHECK(contains(bytes, "Value='&#937; &quot;&lt;\xe4'"));
  CHECK(contains(bytes, "<CFGCol Name='Foreign'><CFGValue Value='7'/></CFGCol>\n<CFGCol "));
  CHECK(contains(bytes,
                 "<Projekt x='\xe4'><!-- c -->\n"
                 "<CFGConfigCFGClassHeader Name='A' own='1'><CFGClass>\n"
                 "  <CFGCol Name='Class'><CFGValue Value='a'/></CFGCol>\n"));
  CHECK(!contains(bytes, "\r"));
  ANSWERS(KPX_C_OK, kpx_c_is_stored(document, 0, u"Description", -1, &stored));
  CHECK(stored == 1);
  ANSWERS(KPX_C_OK, kpx_c_add(document, header, -1, &number));
  CHECK(number == 3);
  {
    kpx_c_document* again = opened(bytesOf(document));
    Text text = textAt(again, 2, u"Class");
    CHECK(is(&text, u"\u03a9 \"<\u00e4"));
    ANSWERS(KPX_C_OK, kpx_c_find(again, header, -1, 2, &number));
    CHECK(number == 3);
    ANSWERS(KPX_C_OK, kpx_c_close(again));
  }
  ANSWERS(KPX_C_OK, kpx_c_close(document));
}

/* Every key of every class: its type is the one that its getters take, and what a getter gives can
 * be set again without a change. */
static void everySettingCanBeReadAndWritten(void) {
  int32_t classes = 0, i, k;
  ANSWERS(KPX_C_OK, kpx_c_class_count(&classes));
  CHECK(classes > 50);
  for (i = 0; i < classes; ++i) {
    kpx_c_document* document = NULL;
    const kpx_c_unit* name = NULL;
    int32_t length = 0, configuration = -1, keys = 0;
    ANSWERS(KPX_C_OK, kpx_c_class_name(i, &name, &length));
    ANSWERS(KPX_C_OK, kpx_c_new(NULL, 0, &document));
    ANSWERS(KPX_C_OK, kpx_c_add(document, name, length, &configuration));
    ANSWERS(KPX_C_OK, kpx_c_key_count(document, configuration, &keys));
    for (k = 0; k < keys; ++k) {
      const kpx_c_unit* key = NULL;
      int32_t type = 0, integer = 0;
      double real = 0;
      Text before, after;
      ANSWERS(KPX_C_OK, kpx_c_key(document, configuration, k, &key, &length));
      ANSWERS(KPX_C_OK, kpx_c_type(document, configuration, key, length, &type, NULL));
      before = textAt(document, configuration, key);
      ANSWERS(type <= KPX_C_ENUMERATION ? KPX_C_OK : KPX_C_WRONG_TYPE,
              kpx_c_get_int32(document, configuration, key, length, &integer));
      ANSWERS(type <= KPX_C_REAL ? KPX_C_OK : KPX_C_WRONG_TYPE,
              kpx_c_get_double(document, configuration, key, length, &real));
      if (before.length == 0 && type != KPX_C_TEXT) continue; /* a column without a value */
      if (type == KPX_C_TEXT) {
        ANSWERS(KPX_C_WRONG_TYPE, kpx_c_set_int32(document, configuration, key, length, 1));
        ANSWERS(KPX_C_OK,
                kpx_c_set_text(document, configuration, key, length, before.units, before.length));
      } else if (type == KPX_C_REAL) {
        ANSWERS(KPX_C_OK, kpx_c_set_double(document, configuration, key, length, real));
      } else {
        ANSWERS(KPX_C_WRONG_TYPE, kpx_c_set_double(document, configuration, key, length, 1));
        ANSWERS(KPX_C_OK, kpx_c_set_int32(document, configuration, key, length, integer));
      }
      after = textAt(document, configuration, key);
      CHECK(isSame(after.units, after.length, before.units));
    }
    ANSWERS(KPX_C_OK, kpx_c_close(document));
  }
}

static void buffersHoldTheWholeTextOrNone(void) {
  kpx_c_document* document = opened(twoHeaders);
  kpx_c_unit buffer[7] = u"ABCDEF";
  int32_t length = -1;
  int64_t count = -1;
  char byte = 'x';
  ANSWERS(KPX_C_OK, kpx_c_set_text(document, 0, u"Class", -1, u"wxyz", -1));
  ANSWERS(KPX_C_OK, kpx_c_get_text(document, 0, u"Class", -1, buffer, 5, &length));
  CHECK(length == 4 && memcmp(buffer, u"wxyz\0F", 12) == 0);
  buffer[4] = 'E';
  ANSWERS(KPX_C_OK, kpx_c_get_text(document, 0, u"Class", -1, buffer, 4, &length));
  CHECK(length == 4 && buffer[3] == 'z' && buffer[4] == 'E'); /* no room for the 0 */
  ANSWERS(KPX_C_TRUNCATED, kpx_c_get_text(document, 0, u"Class", -1, buffer, 3, &length));
  CHECK(length == 4 && buffer[0] == 0 && buffer[1] == 'x');
  ANSWERS(KPX_C_TRUNCATED, kpx_c_get_text(document, 0, u"Class", -1, NULL, 0, &length));
  CHECK(length == 4);
  ANSWERS(KPX_C_TRUNCATED, kpx_c_save_bytes(document, &byte, 1, &count));
  CHECK(count == (int64_t)sizeof twoHeaders - 1 + 3 && byte == 'x');
  ANSWERS(KPX_C_OK, kpx_c_close(document));
}

static void whatIsNotThereIsTold(void) {
  static const char ambiguous[] =
      "<r><CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'><CFGValue Value='a'/></CFGCol>"
      "<CFGCol Name='Class'><CFGValue Value='b'/></CFGCol></CFGClass></CFGConfigCFGClassHeader>"
      "<CFGConfigCFGClassHeader/></r>";
  kpx_c_document* document = opened(ambiguous);
  kpx_c_document* alone = NULL;
  int32_t number = 5, code = 0;
  Text text;
  ANSWERS(KPX_C_UNKNOWN_CLASS, kpx_c_find(document, u"CFGHeadr", -1, 0, &number));
  CHECK(number == -1);
  ANSWERS(KPX_C_UNKNOWN_CLASS, kpx_c_add(document, u"CFGAdjustEvalGroupRow", -1, &number));
  ANSWERS(KPX_C_NO_CONFIGURATION, kpx_c_find(document, header, -1, 2, &number));
  ANSWERS(KPX_C_NO_CONFIGURATION, kpx_c_find(document, general, -1, 0, &number));
  ANSWERS(KPX_C_NO_CONFIGURATION, kpx_c_key_count(document, 2, &number));
  ANSWERS(KPX_C_NO_CONFIGURATION, kpx_c_key_count(document, -1, &number));
  ANSWERS(KPX_C_UNKNOWN_KEY, kpx_c_set_text(document, 0, u"class", -1, u"x", -1));
  ANSWERS(KPX_C_OK, kpx_c_last_error_text(text.units, bufferSize, &text.length));
  CHECK(is(&text, u"CFGHeader.class is not known to this class"));
  /* Readers take the last; which one a change would mean is not clear. */
  text = textAt(document, 0, u"Class");
  CHECK(is(&text, u"b"));
  ANSWERS(KPX_C_KEY_TWICE, kpx_c_set_text(document, 0, u"Class", -1, u"x", -1));
  /* Without an element CFGClass there is no place for it. */
  ANSWERS(KPX_C_REFUSED, kpx_c_set_text(document, 1, u"Class", -1, u"x", -1));
  ANSWERS(KPX_C_OK, kpx_c_last_error(&code, NULL, NULL, NULL));
  CHECK(code == KPX_C_REFUSED);
  CHECK(strcmp(bytesOf(document), ambiguous) == 0);
  ANSWERS(KPX_C_OK, kpx_c_close(document));

  ANSWERS(KPX_C_BAD_VALUE, kpx_c_new(u"no name", -1, &alone));
  CHECK(alone == NULL);
  ANSWERS(KPX_C_OK, kpx_c_new(NULL, 0, &alone));
  ANSWERS(KPX_C_OK, kpx_c_add(alone, header, -1, &number));
  ANSWERS(KPX_C_REFUSED, kpx_c_add(alone, header, -1, &number));
  ANSWERS(KPX_C_OK, kpx_c_close(alone));
}

static void valuesAreCheckedAsTheyAreSet(void) {
  static const struct {
    const kpx_c_unit* value;
    int32_t code;
  } reals[] = {{u"0,5", KPX_C_OK},         {u" -1e3", KPX_C_OK},   {u"1.234,5", KPX_C_BAD_VALUE},
               {u"12 m", KPX_C_BAD_VALUE}, {u"", KPX_C_BAD_VALUE}, {u"1e60", KPX_C_BAD_VALUE}};
  const kpx_c_unit lone[] = {'a', 0xd800, 0};
  kpx_c_document* document = NULL;
  int32_t configuration = -1, keys = 0, type = 0, length = 0, value = -1;
  const kpx_c_unit* key = NULL;
  size_t i;
  static char xml[bytesSize];
  char* flag;
  ANSWERS(KPX_C_OK, kpx_c_new(NULL, 0, &document));
  ANSWERS(KPX_C_OK, kpx_c_add(document, general, -1, &configuration));
  for (i = 0; i < sizeof reals / sizeof *reals; ++i) {
    ANSWERS(reals[i].code, kpx_c_set_text(document, 0, tolerance, -1, reals[i].value, -1));
  }
  ANSWERS(KPX_C_BAD_VALUE, kpx_c_set_double(document, 0, tolerance, -1, INFINITY));
  ANSWERS(KPX_C_BAD_VALUE, kpx_c_set_double(document, 0, tolerance, -1, NAN));
  ANSWERS(KPX_C_OK, kpx_c_set_int32(document, 0, tolerance, -1, -3));
  ANSWERS(KPX_C_OK, kpx_c_key_count(document, 0, &keys));
  while (type != KPX_C_TEXT && keys-- > 0) {
    ANSWERS(KPX_C_OK, kpx_c_key(document, 0, keys, &key, &length));
    ANSWERS(KPX_C_OK, kpx_c_type(document, 0, key, length, &type, NULL));
  }
  ANSWERS(KPX_C_BAD_VALUE, kpx_c_set_text(document, 0, key, length, lone, -1));
  ANSWERS(KPX_C_BAD_VALUE, kpx_c_set_text(document, 0, key, length, u"\0", 1));

  /* A stored value that is none is read as modules read it, and told. */
  memcpy(xml, bytesOf(document), sizeof xml);
  flag = strstr(xml, "Name=\"CA2T_Tol_XY\"");
  CHECK(flag != NULL);
  flag = flag ? strstr(flag, "Value=\"-3") : NULL;
  CHECK(flag != NULL);
  if (flag) memcpy(flag + 7, "1x", 2);
  ANSWERS(KPX_C_OK, kpx_c_close(document));
  document = opened(xml);
  {
    double real = 0;
    ANSWERS(KPX_C_BAD_STORED_VALUE, kpx_c_get_double(document, 0, tolerance, -1, &real));
    CHECK(real == 1);
    ANSWERS(KPX_C_WRONG_TYPE, kpx_c_get_int32(document, 0, tolerance, -1, &value));
    CHECK(value == 0);
  }
  ANSWERS(KPX_C_OK, kpx_c_close(document));
}

static void badDocumentsTellTheirPlace(void) {
  static const struct {
    const char* bytes;
    int32_t code, line, column;
  } cases[] = {
      {"<a>\n  <b>\n</a>", KPX_C_ILL_FORMED, 2, 3},
      {"<?xml version='1.0' encoding='UTF-8'?>\n<a>\xff</a>", KPX_C_NOT_TEXT, 2, 4},
      {"", KPX_C_ILL_FORMED, 1, 1},
  };
  size_t i;
  for (i = 0; i < sizeof cases / sizeof *cases; ++i) {
    kpx_c_document* document = NULL;
    int32_t code = 0, number = -1, line = 0, column = 0, length = 0;
    ANSWERS(cases[i].code,
            kpx_c_open_bytes(cases[i].bytes, (int64_t)strlen(cases[i].bytes), &document));
    CHECK(document == NULL);
    ANSWERS(KPX_C_OK, kpx_c_last_error(&code, &number, &line, &column));
    CHECK(code == cases[i].code && number == 0);
    if (line != cases[i].line || column != cases[i].column) {
      ++failures;
      fprintf(stderr, "%s: line %d, column %d\n", cases[i].bytes, (int)line, (int)column);
    }
    ANSWERS(KPX_C_TRUNCATED, kpx_c_last_error_text(NULL, 0, &length));
    CHECK(length > 10);
  }
  {
    kpx_c_document* document = NULL;
    ANSWERS(KPX_C_NOT_READ, kpx_c_open(u"no such file", -1, &document));
    ANSWERS(KPX_C_NOT_READ, kpx_c_open(u"", -1, &document));
  }
}

/* Null and numbers out of range, in each place where one can stand. */
static void badArgumentsAreAnswered(void) {
  union {
    uint64_t words[64];
    kpx_c_unit units[1];
  } other = {{0}};
  kpx_c_document* const none = (kpx_c_document*)(void*)&other;
  kpx_c_document* document = opened(twoHeaders);
  kpx_c_document* made = document;
  kpx_c_unit unit = 'x';
  const kpx_c_unit* lent = &unit;
  const kpx_c_unit* key = u"Class";
  int32_t number = 0, length = 0;
  double real = 0;
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_new(u"a", -1, NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_new(NULL, -1, &made));
  CHECK(made == NULL);
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_open(u"a", -1, NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_open_bytes("a", 1, NULL));
  ANSWERS(KPX_C_BAD_DOCUMENT, kpx_c_save(NULL, u"a", -1));
  ANSWERS(KPX_C_BAD_DOCUMENT, kpx_c_save(none, u"a", -1));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_save(document, u"a", -2));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_save_bytes(document, NULL, 0, NULL));
  ANSWERS(KPX_C_BAD_DOCUMENT, kpx_c_close(none));
  ANSWERS(KPX_C_OK, kpx_c_close(NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_count(document, NULL));
  ANSWERS(KPX_C_BAD_DOCUMENT, kpx_c_count(NULL, &number));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_find(document, header, -1, -1, &number));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_find(document, header, -1, 0, NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_add(document, NULL, 3, &number));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_configuration_class(document, 0, &lent, NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_class_count(NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_class_name(1000000, &lent, &length));
  CHECK(lent == NULL);
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_class_name(-1, &lent, &length));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_key(document, 0, 1000, &lent, &length));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_key(document, 0, -1, &lent, &length));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_type(document, 0, key, -1, NULL, NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_caption(document, 0, NULL, -1, &unit, 1, &length));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_group(document, 0, key, -1, NULL, 1, &length));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_is_stored(document, 0, key, -1, NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_get_int32(document, 0, key, -1, NULL));
  ANSWERS(KPX_C_BAD_DOCUMENT, kpx_c_get_double(NULL, 0, key, -1, &real));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_get_double(document, 0, key, -1, NULL));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_get_text(document, 0, key, -1, &unit, -1, &length));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_get_text(document, 0, key, -1, &unit, 1, NULL));
  ANSWERS(KPX_C_BAD_DOCUMENT, kpx_c_set_int32(none, 0, key, -1, 1));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_set_double(document, 0, key, -5, 1));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_set_text(document, 0, key, -1, NULL, 1));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_text(1, NULL, 5, &length));
  ANSWERS(KPX_C_BAD_ARGUMENT, kpx_c_start_texts(NULL, -1, NULL, 0));
  ANSWERS(KPX_C_OK, kpx_c_close(document));
}

static void textsFollowTheLanguage(void) {
  kpx_c_document* document = opened(twoHeaders);
  Text text;
  ANSWERS(KPX_C_OK, kpx_c_text(614, text.units, bufferSize, &text.length));
  CHECK(is(&text, u"Fehler"));
  ANSWERS(KPX_C_NO_TEXT, kpx_c_text(-1, text.units, bufferSize, &text.length));
  ANSWERS(KPX_C_OK, kpx_c_caption(document, 0, u"Class", -1, text.units, bufferSize, &text.length));
  CHECK(is(&text, u"Class "));
  ANSWERS(KPX_C_OK, kpx_c_group(document, 0, u"Class", -1, text.units, bufferSize, &text.length));
  CHECK(is(&text, u"64"));
  /* No such file: the texts stay German. */
  ANSWERS(KPX_C_OK, kpx_c_start_texts(u"nowhere", -1, u"Dansk [DAN.LNG]", -1));
  ANSWERS(KPX_C_OK, kpx_c_text(614, text.units, bufferSize, &text.length));
  CHECK(is(&text, u"Fehler"));
#ifdef KPX_PROGRAM_FOLDER
  ANSWERS(KPX_C_OK, kpx_c_start_texts(KPX_PROGRAM_FOLDER, -1, u"English [ENG.LNG]", -1));
  ANSWERS(KPX_C_OK, kpx_c_text(614, text.units, bufferSize, &text.length));
  CHECK(is(&text, u"Error"));
#endif
  ANSWERS(KPX_C_OK, kpx_c_close(document));
}

int main(void) {
  CHECK(kpx_c_version() == KPX_C_VERSION);
  newDocumentGoesThroughAFile();
  nothingElseInTheDocumentChanges();
  everySettingCanBeReadAndWritten();
  buffersHoldTheWholeTextOrNone();
  whatIsNotThereIsTold();
  valuesAreCheckedAsTheyAreSet();
  badDocumentsTellTheirPlace();
  badArgumentsAreAnswered();
  textsFollowTheLanguage();
  if (failures == 0) puts("all checks passed");
  return failures == 0 ? 0 : 1;
}
