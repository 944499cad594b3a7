// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/meta_kind.h"

namespace clipheave::platform {

ByteView metaChildren(ByteView metaPayload) {
    return metaPayload.sub(metaChildrenOffset(metaPayload));
}

MetaKind metaKindOf(ByteView children) {
    MetaSigns signs;
    BoxWalker walker(children);
    while (const auto box = walker.next()) {
        signs.see(box->type);
        if (box->type == fourCc("hdlr"))
            signs.handler = walker.payload(*box).be32(8).value_or(0);
    }
    return metaKind(signs);
}

} // namespace clipheave::platform
