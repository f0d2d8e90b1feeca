#pragma once
// Attributes of buffers and frames in data-object form: the writable view C_BufferAttributes and
// GetBufferAttributes, which reads all of a buffer's attributes at once.

#include <DataObjects/C_BufferAttributes.h>
#include <DataObjects/GlobalAndFrameAttributes.h>
