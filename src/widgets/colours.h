// The colour of quiet texts: hints in empty fields, and what stands beside a run.
#ifndef QUILLON_WIDGETS_COLOURS_H
#define QUILLON_WIDGETS_COLOURS_H

namespace widgets {

// Makes quiet texts a paler form of the desktop's own text colour, now and whenever the desktop changes its
// colours. To be called once, when the application object is there. Some desktops' colours leave them as for
// light windows, where nobody could read them in dark ones.
void keep_quiet_texts_readable();

} // namespace widgets

#endif
