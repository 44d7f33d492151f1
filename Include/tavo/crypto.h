#ifndef TAVO_CRYPTO_H
#define TAVO_CRYPTO_H

/// The cryptography interface of the suite. This header includes every service; each can be included alone as well.
///
/// Conventions that hold for all of them:
///
/// * Ownership. A static `Create` returns a new object that the caller deletes. A factory never takes ownership of an
///   argument. "Clones" means that the argument may be deleted right after the call, "borrows" that it must outlive
///   the object. A getter that returns a pointer lends it, unless its comment says that the caller deletes it.
///   `tavo/owned.h` has smart pointers for callers who want them.
/// * Errors. Every failure of this library is thrown as `IException*`, a pointer to a heap object that whoever catches
///   it deletes. Comments give identifier and message: 4000 "...". Identifiers are those of CryptoExceptionId. When an
///   operation wraps the failure of another, getInnerException() has the cause. Out of memory is thrown as
///   std::bad_alloc (or std::length_error), by value.
/// * Outputs are written on success only; they may be the same array as an input. Where a comment says that an output
///   is cleared first, a failure leaves it empty.
/// * Every factory that takes an algorithm and a parameter map throws 4000 "pAlgorithm should not be NULL" for a null
///   algorithm, 4000 "Bad Parameters" for a null map and 4011 "FIPS Mode is not supported on linux" for a map in FIPS
///   mode, in this order.
/// * Lengths are in bytes unless a comment says bits. Multi-byte numbers are most significant byte first unless a
///   comment says otherwise.
/// * Threads. The library starts none and locks nothing: distinct objects may be used from distinct threads, one object
///   by one thread at a time.
/// * Trace. Operations write their entry, exit and errors to `rz/log.h`, component "CRYPTO"; the options of a parameter
///   map are stored and handed out without a line.
/// * Host process. libcrypto's default library context, providers and error queue are left as they were found.

#include "rz/cext.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/bytes.h"
#include "tavo/framework/certcontext.h"
#include "tavo/framework/certificate.h"
#include "tavo/framework/certproperties.h"
#include "tavo/framework/cipher.h"
#include "tavo/framework/digest.h"
#include "tavo/framework/exception.h"
#include "tavo/framework/key.h"
#include "tavo/framework/mac.h"
#include "tavo/framework/names.h"
#include "tavo/framework/padding.h"
#include "tavo/framework/parameters.h"
#include "tavo/framework/random.h"
#include "tavo/framework/refused.h"
#include "tavo/framework/rsa.h"
#include "tavo/framework/signature.h"

#endif
