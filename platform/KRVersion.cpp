#include "platform/KRVersion.h"

#define KR_QUOTED(text) #text
#define KR_TEXT(macro) KR_QUOTED(macro)

#if defined(__clang__)
#define KR_COMPILER "Clang " KR_TEXT(__clang_major__) "." KR_TEXT(__clang_minor__) "." KR_TEXT(__clang_patchlevel__)
#elif defined(__GNUC__)
#define KR_COMPILER "GCC " KR_TEXT(__GNUC__) "." KR_TEXT(__GNUC_MINOR__) "." KR_TEXT(__GNUC_PATCHLEVEL__)
#else
#define KR_COMPILER "another compiler"
#endif

#ifdef NDEBUG
#define KR_KIND "release"
#else
#define KR_KIND "debug"
#endif

// Constant, so that it is there before any other start-up code asks.
constinit const KRString KRAddressBookManagerSDKVersionString = "1.0 (" KR_COMPILER ", " KR_KIND ")"_kr;
