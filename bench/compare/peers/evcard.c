/* libebook-contacts: one EVCard for each card of a file. An EVCard is parsed when it is first asked for something, so the
   time covers making all of them and reading names, phones, e-mails and addresses of each once.

       evcard FILE */
#define _GNU_SOURCE
#include <libebook-contacts/libebook-contacts.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec + (double)time.tv_nsec * 1e-9;
}

enum { PHONES, EMAILS, ADDRESSES, NAMES, KINDS };

static int kind_of(const char *name) {
  static const struct {
    const char *name;
    int kind;
  } kinds[] = {{"TEL", PHONES}, {"EMAIL", EMAILS}, {"ADR", ADDRESSES}, {"N", NAMES}, {"FN", NAMES}};
  for (size_t i = 0; i < G_N_ELEMENTS(kinds); ++i)
    if (!strcasecmp(name, kinds[i].name)) return kinds[i].kind;
  return -1;
}

int main(int count, char **words) {
  static const char end[] = "END:VCARD\r\n";
  const double start = now();
  gchar *data;
  gsize size;
  if (count != 2 || !g_file_get_contents(words[1], &data, &size, NULL)) return 1;
  GPtrArray *cards = g_ptr_array_new();
  size_t counts[KINDS] = {0}, chars = 0;
  for (char *card = data, *next; (next = strstr(card, end)); card = next) {
    next += strlen(end);
    const char kept = *next;
    *next = 0;
    EVCard *object = e_vcard_new_from_string(card);
    *next = kept;
    g_ptr_array_add(cards, object);
    for (GList *line = e_vcard_get_attributes(object); line; line = line->next) {
      const int kind = kind_of(e_vcard_attribute_get_name(line->data));
      if (kind < 0) continue;
      ++counts[kind];
      for (GList *value = e_vcard_attribute_get_values(line->data); value; value = value->next)
        chars += strlen(value->data);
    }
  }
  printf("{\"seconds\":%.4f,\"bytes\":%lu,\"contacts\":%u,\"phones\":%zu,\"emails\":%zu,\"addresses\":%zu,\"chars\":%zu}\n",
         now() - start, (unsigned long)size, cards->len, counts[PHONES], counts[EMAILS], counts[ADDRESSES], chars);
  return 0;
}
