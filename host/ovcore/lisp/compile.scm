;; Compiles the host's LISP units to Guile bytecode when the host is built, so that a
;; process loads them in a few milliseconds instead of expanding and interpreting their
;; source at every start.
;;
;;   guile --no-auto-compile -s compile.scm OUT-DIR UNIT.scm ...
;;
;; The units are compiled in the order given, in a module of the host module's name, so
;; that the macros of one are there for those after it and their names resolve to the host
;; module when the code runs. That module stays open to redefinition, as the interpreted
;; source was: nothing is inlined across definitions.

(define-module (orvex host primitives))
(define-module (orvex host) #:declarative? #f)
(define-module (orvex host compile-units) #:use-module (system base compile))

;; The boot unit turns these symbols on for everything read after it.
(read-enable 'r7rs-symbols)

(let ((arguments (cdr (command-line))))
  (when (null? arguments)
    (error "usage: compile.scm OUT-DIR UNIT.scm ..."))
  (for-each
   (lambda (unit)
     (compile-file unit
                   #:output-file (string-append (car arguments) "/"
                                                (basename unit ".scm") ".go")
                   #:env (resolve-module '(orvex host))
                   #:warning-level 0))
   (cdr arguments)))
