"""What the tests of whole files share, wherever they stand: mkvmux under Wine, inputs, judges, and the runner."""
