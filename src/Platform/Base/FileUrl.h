// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

namespace ferrow {

/// The place of a file or folder: an absolute path as bytes. File names on this system are bytes, not text, and a name
/// that is not valid UTF-8 must survive unchanged; text is made only for showing. Equality and hashing are by the bytes
/// as given: use standardized() first where two spellings of one place must agree.
class FileUrl {
public:
    FileUrl() = default; ///< No place: isEmpty() is true.

    /// A relative `path` is taken from the current working directory.
    [[nodiscard]] static FileUrl fromPath(const QByteArray& path);
    /// As fromPath, for text that came from the program itself or from the user's keyboard.
    [[nodiscard]] static FileUrl fromPath(const QString& path);
    /// Absent unless `url` has the file scheme and a path.
    [[nodiscard]] static std::optional<FileUrl> fromUrl(const QUrl& url);

    [[nodiscard]] bool isEmpty() const { return path_.isEmpty(); }
    [[nodiscard]] const QByteArray& path() const { return path_; }
    [[nodiscard]] QUrl toUrl() const;
    /// False for a path holding a NUL byte: no system call can name it.
    [[nodiscard]] bool hasFileSystemRepresentation() const;

    /// "/a/b.jpg" gives "b.jpg"; the root gives "/".
    [[nodiscard]] QByteArray lastPathComponentBytes() const;
    /// The last component for showing: bytes that are not UTF-8 become U+FFFD.
    [[nodiscard]] QString lastPathComponent() const;
    /// Path for showing, as lastPathComponent().
    [[nodiscard]] QString displayPath() const;
    /// Text behind the last dot of the last component, without it; empty for none and for a leading dot alone.
    [[nodiscard]] QByteArray pathExtension() const;
    /// The last component without its extension.
    [[nodiscard]] QByteArray stem() const;

    [[nodiscard]] FileUrl appending(const QByteArray& component) const;
    [[nodiscard]] FileUrl deletingLastPathComponent() const;
    /// ".", ".." and repeated slashes collapsed by text alone: links are not resolved, nothing is folded.
    [[nodiscard]] FileUrl standardized() const;

    auto operator<=>(const FileUrl& other) const { return QByteArrayView(path_).compare(other.path_) <=> 0; }
    bool operator==(const FileUrl&) const = default;

private:
    QByteArray path_;
};

} // namespace ferrow

template <>
struct std::hash<ferrow::FileUrl> {
    std::size_t operator()(const ferrow::FileUrl& url) const noexcept { return qHash(url.path()); }
};
