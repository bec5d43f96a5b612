"""Exceptions and warnings raised for the library's statuses."""

STATUS_NAMES = {
    0: "orvStatusOk",
    1: "orvStatusNothingDone",
    35: "orvStatusOddSize",
    -5: "orvStatusBadArgument",
    -6: "orvStatusBadSize",
    -8: "orvStatusNullPointer",
    -13: "orvStatusBadContext",
    -16: "orvStatusBadStep",
    -47: "orvStatusBadChannels",
    -49: "orvStatusBadGammaRange",
    -54: "orvStatusBadLevels",
    -55: "orvStatusBadNoise",
    -224: "orvStatusBadDitherType",
}


class Error(Exception):
    """A conversion returned a failing status; nothing was written.

    Attributes: status (the number), status_name, function, argument (the
    argument the status points at, when one can be named)."""

    def __init__(self, function, status, argument=None):
        self.function = function
        self.status = status
        self.status_name = STATUS_NAMES.get(status, "status %d" % status)
        self.argument = argument
        msg = "%s returned %s (%d)" % (function, self.status_name, status)
        if argument:
            msg += ": check %s" % argument
        super().__init__(msg)


class NullPointerError(Error, ValueError):
    """A required array was None."""


class SizeError(Error, ValueError):
    """The size is below the conversion's minimum."""


class StepError(Error, ValueError):
    """A row step is not allowed (for example not positive)."""


class ArgumentError(Error, ValueError):
    """A parameter (levels, noise, dither type, gamma range, grid...) has no legal value."""


class OrvccWarning(UserWarning):
    """The conversion ran but says something about its result."""


class OddSizeWarning(OrvccWarning):
    """Only whole sampling blocks were converted; the rest was left untouched."""


class NothingDoneWarning(OrvccWarning):
    """The conversion ran and wrote nothing (for example a flat tone map)."""


_ERRORS = {-8: NullPointerError, -6: SizeError, -16: StepError}


def error_class(status):
    return _ERRORS.get(status, ArgumentError if status in (-5, -47, -49, -54, -55, -224) else Error)


def warning_class(status):
    return {35: OddSizeWarning, 1: NothingDoneWarning}.get(status, OrvccWarning)
