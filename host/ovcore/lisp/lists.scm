;; Lists and symbols. A script can make a circular list with set-cdr!, and nothing here may
;; loop on one: every function that walks a list checks first that it ends, and refuses
;; one that does not with an error naming itself.

;; Walks the car and cdr links depth first; a pair met again on its own path is a cycle.
;; Shared parts that are no cycle (the same list twice in a list) are fine.
(define (check-finite-tree who x)
  (let ((path (make-hash-table)))
    (let walk ((x x) (depth 0))
      (when (pair? x)
        (unless (list? x)
          ;; An improper list is fine, a circular one is not.
          (let loop ((slow x) (fast x))
            (when (and (pair? fast) (pair? (cdr fast)))
              (let ((slow (cdr slow)) (fast (cddr fast)))
                (when (eq? slow fast) (lisp-error "~a: circular list" who))
                (loop slow fast)))))
        (let loop ((rest x))
          (when (pair? rest)
            (when (hashq-ref path rest) (lisp-error "~a: circular list" who))
            (hashq-set! path rest #t)
            (walk (car rest) (+ depth 1))
            (loop (cdr rest))))
        (let loop ((rest x))
          (when (pair? rest)
            (hashq-remove! path rest)
            (loop (cdr rest)))))))
  x)

;; A list that ends, proper or dotted.
(define (check-ends who x)
  (let loop ((slow x) (fast x))
    (if (and (pair? fast) (pair? (cdr fast)))
        (let ((slow (cdr slow)) (fast (cddr fast)))
          (if (eq? slow fast) (lisp-error "~a: circular list" who) (loop slow fast)))
        x)))

(define (check-list who x)
  (cond ((lisp-nil? x) '())
        ((list? x) x)
        ((pair? x) (check-ends who x) (bad-argument who x))
        (else (bad-argument who x))))

;; (subst new old list): every element equal to old, at any depth, becomes new.
(define (subst new old items)
  (check-finite-tree 'subst items)
  (let walk ((x items))
    (cond ((equal x old) new)
          ((pair? x) (cons (walk (car x)) (walk (cdr x))))
          (else x))))

(define (lisp-length items) (length (check-list 'length items)))
(define (lisp-reverse items) (reverse (check-list 'reverse items)))
(define (lisp-append . lists)
  (apply append (map (lambda (l) (check-list 'append l)) lists)))
(define (lisp-member x items)
  (or (let loop ((rest (check-list 'member items)))
        (cond ((null? rest) #f)
              ((equal x (car rest)) rest)
              (else (loop (cdr rest)))))
      '()))
(define (lisp-assoc key items)
  (or (let loop ((rest (check-list 'assoc items)))
        (cond ((null? rest) #f)
              ((and (pair? (car rest)) (equal key (caar rest))) (car rest))
              (else (loop (cdr rest)))))
      '()))

;; (boundp 'name): T when the name has a value other than nil.
(define (boundp name)
  (unless (symbol? name) (bad-argument 'boundp name))
  (let ((variable (module-variable (current-module) name)))
    (and variable (variable-bound? variable) (lisp-true? (variable-ref variable)))))

;; (set 'name value): sets the document's variable that the symbol names.
(define (lisp-set name value)
  (unless (and (symbol? name) (not (memq name '(nil T)))) (bad-argument 'set name))
  (%set-global! name value))

;; car and cdr combined to four levels: caddr is car of cdr of cdr.
(define (%define-cxr! path)
  (let* ((name (string->symbol (string-append "c" path "r")))
         (steps (reverse (string->list path)))
         (procedure
          (lambda (x)
            (let loop ((x x) (steps steps))
              (cond ((null? steps) x)
                    ((pair? x) (loop (if (char=? (car steps) #\a) (car x) (cdr x)) (cdr steps)))
                    ((lisp-nil? x) '())
                    (else (bad-argument name x)))))))
    (set-procedure-property! procedure 'name name)
    (module-define! (current-module) (symbol-append 'lisp- name) procedure)
    (cons (symbol-append 'lisp- name) name)))

(define %cxr-names
  (let paths ((n 2))
    (if (> n 4)
        '()
        (append
         (let combos ((k n))
           (if (= k 0)
               '("")
               (apply append
                      (map (lambda (rest) (list (string-append "a" rest) (string-append "d" rest)))
                           (combos (- k 1))))))
         (paths (+ n 1))))))

(module-replace! (current-module)
  (append (map %define-cxr! %cxr-names)
          '(subst boundp (lisp-set . set) (lisp-length . length) (lisp-reverse . reverse)
            (lisp-append . append) (lisp-member . member) (lisp-assoc . assoc))))
