import QtQuick

// The root of the overlay's content; it has no behaviour of its own.
Item {}
