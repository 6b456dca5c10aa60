#include "cl_bdt.h"

namespace ChunkLib
{

namespace
{

struct Type
{
    uint32 size;
    const char* name;
};

const Type TYPES[16] = {
    {0, "none"},      {1, "byte"},      {2, "int16"}, {4, "int32"}, {4, "float"}, {8, "float[2]"},
    {12, "float[3]"}, {16, "float[4]"}, {0, "none"},  {0, "none"},  {0, "none"},  {0, "none"},
    {0, "none"},      {0, "none"},      {0, "none"},  {0, "none"},
};

} // namespace

uint32 BDT::getSize(unsigned int code) const
{
    return TYPES[code & 15].size;
}

const char* BDT::getName(unsigned int code) const
{
    return TYPES[code & 15].name;
}

} // namespace ChunkLib
