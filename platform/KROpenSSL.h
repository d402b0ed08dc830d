// The one place that includes OpenSSL.
#pragma once

#include <openssl/evp.h>
