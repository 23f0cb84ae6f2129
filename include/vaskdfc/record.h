/**
 * @file
 * Guards for records that cross the library's border. A guard stands on the line after its record and stops the compiler
 * when the record's size or a field's offset is not the promised one. In C++ it also proves that there is no padding.
 */
#ifndef VASKDFC_RECORD_H
#define VASKDFC_RECORD_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus

#include <type_traits>

#define VASKDFC_RECORD_SIZE(type, size)                                                   \
  static_assert(sizeof(type) == (size) && std::has_unique_object_representations_v<type>, \
                #type " must be " #size " bytes without padding")
#define VASKDFC_FIELD_AT(type, field, at) static_assert(offsetof(type, field) == (at), #type "::" #field " must be at offset " #at)
#define VASKDFC_POINTER_RECORD_SIZE(type, size32, size64)                   \
  static_assert(sizeof(type) == (sizeof(void*) == 4 ? (size32) : (size64)), \
                #type " must be " #size32 " bytes on 32-bit systems, " #size64 " on 64-bit systems")

#else

/** A record without pointers: `type` has `size` bytes. */
#define VASKDFC_RECORD_SIZE(type, size) typedef char vaskdfc_size_of_##type[(sizeof(type) == (size)) ? 1 : -1]
/** A field: `field` stands at offset `at` of `type`. */
#define VASKDFC_FIELD_AT(type, field, at) typedef char vaskdfc_offset_of_##type##_##field[(offsetof(type, field) == (at)) ? 1 : -1]
/** A record that holds native pointers: `size32` bytes on 32-bit systems, `size64` on 64-bit systems. */
#define VASKDFC_POINTER_RECORD_SIZE(type, size32, size64) \
  typedef char vaskdfc_size_of_##type[(sizeof(type) == (sizeof(void*) == 4 ? (size32) : (size64))) ? 1 : -1]

#endif

#endif
