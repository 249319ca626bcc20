// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/VolumeNames.h"

#include "Platform/Base/ByteText.h"
#include "Platform/Files/Descriptor.h"
#include "Platform/Files/FileStatus.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace ferrow::VolumeNames {

namespace {

/// File systems whose names are bytes, unless a folder of theirs is marked otherwise.
bool goesByBytes(std::uint32_t magic)
{
    constexpr std::array<std::uint32_t, 7> known{EXT4_SUPER_MAGIC,     BTRFS_SUPER_MAGIC, XFS_SUPER_MAGIC,
                                                 F2FS_SUPER_MAGIC,     TMPFS_MAGIC,       RAMFS_MAGIC,
                                                 OVERLAYFS_SUPER_MAGIC};
    return std::ranges::find(known, magic) != known.end();
}

} // namespace

bool mayFold(const FileUrl& folder)
{
    const QByteArray path = nearestExisting(folder).path();
    struct statfs volume {};
    if (::statfs(path.constData(), &volume) != 0 || !goesByBytes(std::uint32_t(volume.f_type)))
        return true;
    const Descriptor descriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor.isOpen())
        return true;
    int flags = 0;
    return ::ioctl(descriptor.get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_CASEFOLD_FL) != 0;
}

QByteArray folded(const QByteArray& name)
{
    // Upper case first: some tables know no other, and for them the dotless i is an i.
    const QString text = ByteText::decode(name).normalized(QString::NormalizationForm_D);
    return ByteText::encode(text.toUpper().toCaseFolded().normalized(QString::NormalizationForm_C));
}

} // namespace ferrow::VolumeNames
