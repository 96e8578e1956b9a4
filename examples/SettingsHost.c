/* Settings from a program that is not C++: opens a document of configurations, or makes one, shows
 * and changes a value by class and key, and saves it.
 *
 *     SettingsHost FILE CLASS KEY [VALUE]
 *
 * Arguments have to be ASCII here; a real program hands over what its own texts are in UTF-16. */

#include <stdio.h>
#include <stdlib.h>

#include "kpx_c.h"

enum { capacity = 256 };

static void widen(const char* text, kpx_c_unit* units) {
  int i = 0;
  for (; text[i] != 0 && i < capacity - 1; ++i) units[i] = (unsigned char)text[i];
  units[i] = 0;
}

static void print(const kpx_c_unit* units, int32_t length) {
  for (int32_t i = 0; i < length; ++i) putchar(units[i] < 0x80 ? units[i] : '?');
}

/* Tells why the last call failed. */
static int fail(kpx_c_document* document) {
  kpx_c_unit message[401];
  int32_t length = 0;
  int32_t line = 0;
  int32_t column = 0;
  kpx_c_last_error(NULL, NULL, &line, &column);
  kpx_c_last_error_text(message, 401, &length);
  print(message, length);
  if (line > 0) printf(" (line %d, column %d)", (int)line, (int)column);
  putchar('\n');
  kpx_c_close(document);
  return EXIT_FAILURE;
}

int main(int argc, char** argv) {
  kpx_c_unit path[capacity];
  kpx_c_unit class[capacity];
  kpx_c_unit key[capacity];
  kpx_c_unit value[capacity];
  kpx_c_document* document = NULL;
  int32_t configuration = 0;
  int32_t length = 0;

  if (argc < 4) {
    printf("SettingsHost FILE CLASS KEY [VALUE]\n");
    return EXIT_FAILURE;
  }
  widen(argv[1], path);
  widen(argv[2], class);
  widen(argv[3], key);

  /* A file that is not there becomes a new document with the defaults of the class. */
  int32_t code = kpx_c_open(path, -1, &document);
  if (code == KPX_C_OK) {
    code = kpx_c_find(document, class, -1, 0, &configuration);
  } else if (code == KPX_C_NOT_READ) {
    code = kpx_c_new(NULL, 0, &document);
    if (code == KPX_C_OK) code = kpx_c_add(document, class, -1, &configuration);
  }
  if (code != KPX_C_OK) return fail(document);

  /* Every setting has a caption and a value that can be asked for as text. */
  if (kpx_c_caption(document, configuration, key, -1, value, capacity, &length) < 0) {
    return fail(document);
  }
  print(value, length);
  printf(": ");
  if (kpx_c_get_text(document, configuration, key, -1, value, capacity, &length) < 0) {
    return fail(document);
  }
  print(value, length);
  putchar('\n');

  /* A text is taken if it is a value of the setting's type; a number is stored with its decimals.
   */
  if (argc > 4) {
    widen(argv[4], value);
    if (kpx_c_set_text(document, configuration, key, -1, value, -1) < 0 ||
        kpx_c_save(document, path, -1) < 0) {
      return fail(document);
    }
  }
  kpx_c_close(document);
  return EXIT_SUCCESS;
}
