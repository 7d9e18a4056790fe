#pragma once

#include "base/viewhint_p.h"

#include <QtWidgets/QTreeView>

/// The list of the certificates, by a name for its form. Shows its focus while it is empty, too.
using CertificateList = HintedView<QTreeView>;
