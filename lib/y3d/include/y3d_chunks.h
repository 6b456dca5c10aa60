#pragma once

namespace y3d
{

// All chunk identifiers of a Y3D file. The low four bits are the basic data type of the payload: an identifier whose
// type has a size is followed by its payload at once, any other by a four-byte length. Identifiers from 0xF000 upward
// are shared by meaning; what lies in them depends on the parent.
enum ChunkID : unsigned short
{
    CHUNK_MAIN = 0x1000,

    CHUNK_MESH = 0x2000,
    CHUNK_MESH_FLAGS = 0x2011,
    CHUNK_SUBMESH = 0x2200,
    CHUNK_BONEGROUP = 0x2300,
    CHUNK_BONEGROUP_WEIGHTS = 0x2310,

    CHUNK_IMAGE = 0x4000,

    CHUNK_SCENE = 0x5000,
    CHUNK_CAMERA = 0x5110,
    CHUNK_MESHINSTANCE = 0x5120,
    CHUNK_DUMMY = 0x5130,
    CHUNK_LIGHT = 0x5140,
    CHUNK_LIGHT_DISTANCE = 0x5150,
    CHUNK_LIGHT_FLAG = 0x5151,
    CHUNK_LIGHT_ENERGY = 0x5160,
    CHUNK_ARMATURE = 0x5180,
    CHUNK_BONE = 0x5190,

    CHUNK_MATERIAL = 0x6000,
    CHUNK_MATERIAL_ATTRIBUTE = 0x6100,
    CHUNK_MATERIAL_SHADELESS = 0x6101,
    CHUNK_MATERIAL_FLAG = 0x6111,

    CHUNK_TEXTURE = 0x7000,
    CHUNK_TEXTURE_VALUE = 0x7001,

    CHUNK_VALUE_FLOAT = 0xF004,
    CHUNK_VALUE_VECTOR3 = 0xF006,
    CHUNK_VALUE_VECTOR4 = 0xF007,

    CHUNK_NAME = 0xF010,
    CHUNK_FILE_OR_BOUNDS = 0xF020, // file name in an image, bounding box in a mesh or submesh
    CHUNK_IMAGE_NAME = 0xF030,
    CHUNK_MESH_NAME = 0xF040,
    CHUNK_MATERIAL_NAME = 0xF050,

    CHUNK_TRACK_POSITION = 0xFA00,
    CHUNK_TRACK_ROTATION = 0xFA10,
    CHUNK_TRACK_SCALE = 0xFA20,
    CHUNK_TRACK_COLOR = 0xFA30,
    CHUNK_TRACK_FOV = 0xFA40,

    CHUNK_CURVE_0 = 0xFB00,
    CHUNK_CURVE_1 = 0xFB10,
    CHUNK_CURVE_2 = 0xFB20,
    CHUNK_CURVE_3 = 0xFB30,

    CHUNK_POSITIONS = 0xFF00,
    CHUNK_UVWS = 0xFF10,
    CHUNK_COLORS = 0xFF20,
    CHUNK_INDICES = 0xFF30,
    CHUNK_NORMALS = 0xFF50,
    CHUNK_MATERIAL_REFERENCE = 0xFF80
};

} // namespace y3d
