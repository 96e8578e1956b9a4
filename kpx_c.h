#ifndef KPX_C_H
#define KPX_C_H

/*
 * The settings of the suite for programs that were not built with the library's own compiler: from
 * C, from another C++ compiler, and from every language that can call C functions.
 *
 *     kpx_c_document* document;
 *     int32_t general;
 *     double tolerance;
 *     if (kpx_c_open(u"general.xml", -1, &document) == KPX_C_OK) {
 *       if (kpx_c_find(document, u"CFGGeneralSettings", -1, 0, &general) == KPX_C_OK &&
 *           kpx_c_get_double(document, general, u"CA2T_Tol_XY", -1, &tolerance) == KPX_C_OK &&
 *           kpx_c_set_double(document, general, u"CA2T_Tol_XY", -1, 2 * tolerance) == KPX_C_OK) {
 *         kpx_c_save(document, u"general.xml", -1);
 *       }
 *       kpx_c_close(document);
 *     }
 *
 * Answers. Every function answers a code: KPX_C_OK, a positive one for a success with something
 * to be told, or a negative one for a failure. After a failure numbers that the function gives are
 * 0, pointers null and buffers empty, unless it says otherwise, and kpx_c_last_error tells more.
 * No exception ever leaves the library, and a null pointer or a number out of range is answered
 * with KPX_C_BAD_ARGUMENT.
 *
 * Texts are UTF-16 units with their length in units. A text that goes in may have the length -1: it
 * ends before its unit 0 then; null stands for the empty text when the length is 0. Where units are
 * stored in a buffer of the caller, `length` always gives the units that the whole text has. It is
 * stored whole or not at all: when `capacity`, in units, is smaller than that, the buffer holds the
 * empty text and the answer is KPX_C_TRUNCATED. A unit 0 follows when there is room for it, thus
 * whenever the capacity is greater than the length. A capacity of 0 with a null buffer asks for the
 * length. Nothing that a function stores may overlap a text that goes in: it is emptied first.
 *
 * Threads. A document may be read from several threads while nobody changes it; what loads texts,
 * kpx_c_start_texts or else the first document or text, has to be over before. The library starts
 * no threads.
 *
 * Unexpected failures, such as missing memory, are reported as those of every module: in the error
 * logs and, where the user's switch for it is on, in a message box.
 *
 * Stability. Functions keep their name, their parameters and their meaning; there are no structures
 * that could grow. What is new raises KPX_C_VERSION.
 */

#include <stdint.h>

/* The version of this header, and of a library that has all of its functions. */
#define KPX_C_VERSION 2

/* KPX_STATIC is for programs that link the static library. */
#if defined(KPX_STATIC)
#define KPX_C_API
#elif defined(_WIN32) && defined(KPX_BUILDING)
#define KPX_C_API __declspec(dllexport)
#elif defined(_WIN32)
#define KPX_C_API __declspec(dllimport)
#elif defined(__GNUC__)
#define KPX_C_API __attribute__((visibility("default")))
#else
#define KPX_C_API
#endif

/* The calling convention; it matters on 32-bit Windows only. */
#if defined(_WIN32)
#define KPX_C_CALL __cdecl
#else
#define KPX_C_CALL
#endif

#if defined(__cplusplus)
extern "C" {
typedef char16_t kpx_c_unit;
#else
typedef uint_least16_t kpx_c_unit; /* as in u"..." */
#endif

/* --- codes ------------------------------------------------------------------------------------ */

#define KPX_C_OK 0
#define KPX_C_TRUNCATED 1        /* the buffer is too small and holds the empty text */
#define KPX_C_BAD_ARGUMENT (-1)  /* null where that is not allowed, or a number out of range */
#define KPX_C_BAD_DOCUMENT (-2)  /* what was given as a document is none */
#define KPX_C_UNKNOWN_CLASS (-3) /* there is no class of this name, or not known to the library */
#define KPX_C_NO_CONFIGURATION (-4) /* the document has no such configuration */
#define KPX_C_UNKNOWN_KEY (-5)      /* the class does not know the key */
#define KPX_C_WRONG_TYPE (-6)       /* the setting is not of this type */
#define KPX_C_BAD_VALUE (-7)        /* the setting does not take this value */
#define KPX_C_BAD_STORED_VALUE (-8) /* the stored value is none of its type; given as read */
#define KPX_C_KEY_TWICE (-9)        /* a key that stands twice can be read, not changed */
#define KPX_C_REFUSED (-10)         /* the document does not take it */
#define KPX_C_NOT_READ (-11)        /* the file cannot be read */
#define KPX_C_NOT_TEXT (-12)        /* the bytes are no text in their encoding; there is a place */
#define KPX_C_ILL_FORMED (-13)      /* the document is not well formed; there is a place */
#define KPX_C_NOT_WRITTEN (-14)     /* the file cannot be written and is as it was */
#define KPX_C_NO_TEXT (-15)         /* there is no text of this number */
#define KPX_C_FAILED (-16)          /* unexpected; reported by its number */
#define KPX_C_CHANGED                                                   \
  (-17) /* another program has changed the file since it was opened, or \
           is changing it; it was not written */

/* --- the library ------------------------------------------------------------------------------ */

/* KPX_C_VERSION of the library, for programs that load it at run time. */
KPX_C_API int32_t KPX_C_CALL kpx_c_version(void);

/* What went wrong in the last call of this thread that failed; calls that succeed leave it. `code`
 * is what it answered (KPX_C_OK: none has failed yet); `number` that of the library's error logs,
 * or 0; `line` and `column`, from 1, the place in a document, or 0. Columns count UTF-16 units, of
 * KPX_C_NOT_TEXT bytes. Each pointer may be null. Asking never counts as a call that fails. */
KPX_C_API int32_t KPX_C_CALL kpx_c_last_error(int32_t* code, int32_t* number, int32_t* line,
                                              int32_t* column);
/* The same as an English sentence, of at most 400 units. */
KPX_C_API int32_t KPX_C_CALL kpx_c_last_error_text(kpx_c_unit* buffer, int32_t capacity,
                                                   int32_t* length);

/* --- texts of the suite ----------------------------------------------------------------------- */

/* Loads the texts in a language: "Deutsch [Default]", "English [ENG.LNG]", or null with length 0
 * for the one that the user has chosen. Language files lie in the folder "MLT" of the program
 * folder; null with length 0 leaves that as it is set for the machine. What stands in
 * the brackets decides. A language file that is missing is left out, without an answer of its own:
 * its texts stay English where that file is there, else German. Without this call the texts are the
 * built-in German ones. Nobody may use the library meanwhile: it is for a program's start. */
KPX_C_API int32_t KPX_C_CALL kpx_c_start_texts(const kpx_c_unit* programFolder,
                                               int32_t programFolderLength,
                                               const kpx_c_unit* language, int32_t languageLength);
/* The text of a number in the current language. KPX_C_NO_TEXT: there is none. */
KPX_C_API int32_t KPX_C_CALL kpx_c_text(int32_t number, kpx_c_unit* buffer, int32_t capacity,
                                        int32_t* length);

/* --- classes ---------------------------------------------------------------------------------- */

/* How many classes of configurations there are. */
KPX_C_API int32_t KPX_C_CALL kpx_c_class_count(int32_t* count);
/* The name of a class by its number, from 0, in the order of names. The units stay where they are
 * as long as the library is loaded, and a unit 0 follows. */
KPX_C_API int32_t KPX_C_CALL kpx_c_class_name(int32_t number, const kpx_c_unit** name,
                                              int32_t* length);

/* --- documents -------------------------------------------------------------------------------- */

typedef struct kpx_c_document kpx_c_document;

/* A new document, to be closed by the caller. With a root name it takes any number of
 * configurations below that root; with the empty one the first becomes the root, and stays the only
 * one, which is how programs of the suite store one alone. It is stored as UTF-8.
 * KPX_C_BAD_VALUE: no name of an element. */
KPX_C_API int32_t KPX_C_CALL kpx_c_new(const kpx_c_unit* rootName, int32_t rootNameLength,
                                       kpx_c_document** document);
/* A document from a file or from the bytes of one, which are copied; to be closed by the caller.
 * The encoding is that of the byte-order mark, else of the XML declaration, else UTF-8 or, where
 * the bytes are none, Windows-1252. KPX_C_NOT_READ, KPX_C_NOT_TEXT, KPX_C_ILL_FORMED. */
KPX_C_API int32_t KPX_C_CALL kpx_c_open(const kpx_c_unit* path, int32_t pathLength,
                                        kpx_c_document** document);
KPX_C_API int32_t KPX_C_CALL kpx_c_open_bytes(const void* bytes, int64_t byteCount,
                                              kpx_c_document** document);
/* Writes the document to a file, whole or not at all: a failure leaves an old file as it was. The
 * file has the encoding that was read, and but for the values that were set it is the same text,
 * unknown elements, comments and blanks included. The file that was opened or saved last is not
 * overwritten when another program has changed it since. KPX_C_NOT_WRITTEN, with line and column
 * also for a character that the document's encoding cannot carry; KPX_C_CHANGED (since version 2);
 * KPX_C_REFUSED: the document has no root yet, or values have become too long for it.
 */
KPX_C_API int32_t KPX_C_CALL kpx_c_save(kpx_c_document* document, const kpx_c_unit* path,
                                        int32_t pathLength);
/* The same bytes into memory, by the rules of buffers for texts but without a 0 at the end. */
KPX_C_API int32_t KPX_C_CALL kpx_c_save_bytes(kpx_c_document* document, void* buffer,
                                              int64_t capacity, int64_t* byteCount);
/* Frees a document, changes that were not saved included. Null is none. Nobody may use the pointer
 * afterwards; KPX_C_BAD_DOCUMENT finds only some of those that do. */
KPX_C_API int32_t KPX_C_CALL kpx_c_close(kpx_c_document* document);

/* --- configurations of a document ------------------------------------------------------------- */

/* How many configurations the document holds, those of unknown classes included. They are counted
 * from 0 in its order, and keep their numbers as long as it is open. */
KPX_C_API int32_t KPX_C_CALL kpx_c_count(const kpx_c_document* document, int32_t* count);
/* The number of the configuration that is, from 0, the `index`th of a class. KPX_C_UNKNOWN_CLASS;
 * KPX_C_NO_CONFIGURATION: the document does not have so many of it; `configuration` is -1 then. */
KPX_C_API int32_t KPX_C_CALL kpx_c_find(const kpx_c_document* document, const kpx_c_unit* className,
                                        int32_t classNameLength, int32_t index,
                                        int32_t* configuration);
/* The class of a configuration, units as kpx_c_class_name gives them. KPX_C_UNKNOWN_CLASS: one that
 * the library does not know; it stays in the document and its settings cannot be asked for. */
KPX_C_API int32_t KPX_C_CALL kpx_c_configuration_class(const kpx_c_document* document,
                                                       int32_t configuration,
                                                       const kpx_c_unit** name, int32_t* length);
/* Adds a configuration of a class with its defaults behind the others. KPX_C_UNKNOWN_CLASS;
 * KPX_C_REFUSED: the root is a configuration itself. */
KPX_C_API int32_t KPX_C_CALL kpx_c_add(kpx_c_document* document, const kpx_c_unit* className,
                                       int32_t classNameLength, int32_t* configuration);

/* --- settings: which there are ---------------------------------------------------------------- */

#define KPX_C_INTEGER 1     /* 32 bits */
#define KPX_C_FLAG 2        /* 0 or 1 */
#define KPX_C_ENUMERATION 3 /* the number of a choice; any 32-bit integer is kept */
#define KPX_C_REAL 4
#define KPX_C_TEXT 5

/* How many keys the class of a configuration has. */
KPX_C_API int32_t KPX_C_CALL kpx_c_key_count(const kpx_c_document* document, int32_t configuration,
                                             int32_t* count);
/* The key of a number from 0, in the order of the class; units as kpx_c_class_name gives them. */
KPX_C_API int32_t KPX_C_CALL kpx_c_key(const kpx_c_document* document, int32_t configuration,
                                       int32_t number, const kpx_c_unit** key, int32_t* length);
/* The type of a setting, one of KPX_C_INTEGER to KPX_C_TEXT, and the code of its type in files,
 * which never decides how a value is read. `typeCode` may be null. */
KPX_C_API int32_t KPX_C_CALL kpx_c_type(const kpx_c_document* document, int32_t configuration,
                                        const kpx_c_unit* key, int32_t keyLength, int32_t* type,
                                        int32_t* typeCode);
/* Caption and group of a setting in the current language. Most are stored as the number of a text:
 * where that text is not known, the digits are what is given. */
KPX_C_API int32_t KPX_C_CALL kpx_c_caption(const kpx_c_document* document, int32_t configuration,
                                           const kpx_c_unit* key, int32_t keyLength,
                                           kpx_c_unit* buffer, int32_t capacity, int32_t* length);
KPX_C_API int32_t KPX_C_CALL kpx_c_group(const kpx_c_document* document, int32_t configuration,
                                         const kpx_c_unit* key, int32_t keyLength,
                                         kpx_c_unit* buffer, int32_t capacity, int32_t* length);

/* --- settings: values ------------------------------------------------------------------------- */

/* KPX_C_NO_CONFIGURATION, KPX_C_UNKNOWN_CLASS and KPX_C_UNKNOWN_KEY tell what is not there,
 * KPX_C_WRONG_TYPE that a setting has another type. */

/* Whether the document itself has a value for the key (1) or the default of the class counts (0).
 */
KPX_C_API int32_t KPX_C_CALL kpx_c_is_stored(const kpx_c_document* document, int32_t configuration,
                                             const kpx_c_unit* key, int32_t keyLength,
                                             int32_t* isStored);

/* The value in force, as every module of the suite reads it. Integers, flags and enumerations as
 * int32; these and reals as double; all types as text, numbers in the form that is stored.
 * KPX_C_BAD_STORED_VALUE: the stored text is no value of the type; `value` is what it reads as. */
KPX_C_API int32_t KPX_C_CALL kpx_c_get_int32(const kpx_c_document* document, int32_t configuration,
                                             const kpx_c_unit* key, int32_t keyLength,
                                             int32_t* value);
KPX_C_API int32_t KPX_C_CALL kpx_c_get_double(const kpx_c_document* document, int32_t configuration,
                                              const kpx_c_unit* key, int32_t keyLength,
                                              double* value);
KPX_C_API int32_t KPX_C_CALL kpx_c_get_text(const kpx_c_document* document, int32_t configuration,
                                            const kpx_c_unit* key, int32_t keyLength,
                                            kpx_c_unit* buffer, int32_t capacity, int32_t* length);

/* Sets a value in memory; kpx_c_save writes it, even if it is the default. It is stored as the
 * suite's own programs store it, reals with the decimals of the setting. int32 goes into all
 * numbers, double into reals, text into everything: of a number the whole text has to be one, with
 * a point or a comma. KPX_C_BAD_VALUE: a flag other than 0 and 1, a number that is not finite or
 * too large, a text that is no number or that XML cannot carry. KPX_C_KEY_TWICE. KPX_C_REFUSED: a
 * text that is too long, or a configuration without the element that holds settings. */
KPX_C_API int32_t KPX_C_CALL kpx_c_set_int32(kpx_c_document* document, int32_t configuration,
                                             const kpx_c_unit* key, int32_t keyLength,
                                             int32_t value);
KPX_C_API int32_t KPX_C_CALL kpx_c_set_double(kpx_c_document* document, int32_t configuration,
                                              const kpx_c_unit* key, int32_t keyLength,
                                              double value);
KPX_C_API int32_t KPX_C_CALL kpx_c_set_text(kpx_c_document* document, int32_t configuration,
                                            const kpx_c_unit* key, int32_t keyLength,
                                            const kpx_c_unit* value, int32_t valueLength);

#if defined(__cplusplus)
}
#endif

#endif
