#ifndef RZ_EXPORT_H
#define RZ_EXPORT_H

/* Everything is built with hidden visibility; what a library offers is marked with its macro. Usable from C. */
#define RZ_LOG_API __attribute__((visibility("default")))
#define RZ_CEXT_API __attribute__((visibility("default")))
#define RZ_CRYPTO_API __attribute__((visibility("default")))

#endif
