#include "fe_bufferarb.h"

#include <bitset>
#include <new>

namespace Fennel
{

namespace
{

const std::size_t places = 4096; // several times what the largest scene has
alignas(BufferARB) unsigned char block[places][sizeof(BufferARB)];
std::bitset<places> taken;
std::size_t foremost = 0; // no place in front of this one is free

} // namespace

void* BufferARB::operator new(std::size_t size)
{
    while (foremost < places && taken[foremost]) foremost++;
    if (foremost == places) return ::operator new(size);
    taken[foremost] = true;
    return block[foremost];
}

void BufferARB::operator delete(void* memory)
{
    for (std::size_t place = 0; place < places; place++)
    {
        if (memory != block[place]) continue;
        taken[place] = false;
        if (place < foremost) foremost = place;
        return;
    }
    ::operator delete(memory);
}

} // namespace Fennel
